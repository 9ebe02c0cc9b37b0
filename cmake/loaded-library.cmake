# A library that zelno loads at run time, from its static core and the
# source of its exports, exporting only the names given after EXPORTS; the
# code behind them sits in the core, which the unit tests link directly.
# Target names carry a prefix so that they can't meet a test double's.
function(zelno_add_loaded_library name output_name core exports_source)
  cmake_parse_arguments(PARSE_ARGV 4 arg "" "" EXPORTS)
  add_library(${name} SHARED ${exports_source})
  target_link_libraries(${name} PRIVATE ${core})
  if(WIN32)
    # A module-definition file: the DLL exports these names and no others,
    # and is named as the vendor's, without MinGW's lib prefix.
    set(exports_file ${CMAKE_CURRENT_BINARY_DIR}/${name}.def)
    list(JOIN arg_EXPORTS "\n  " exported)
    file(WRITE ${exports_file} "EXPORTS\n  ${exported}\n")
    target_sources(${name} PRIVATE ${exports_file})
    set_target_properties(${name} PROPERTIES PREFIX "")
  else()
    set(exports_file ${CMAKE_CURRENT_BINARY_DIR}/${name}.map)
    list(JOIN arg_EXPORTS "; " exported)
    file(WRITE ${exports_file} "{ global: ${exported}; local: *; };\n")
    target_link_options(${name} PRIVATE "LINKER:--version-script=${exports_file}")
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${exports_file})
  endif()
  set_target_properties(${name} PROPERTIES
    OUTPUT_NAME ${output_name}
    LIBRARY_OUTPUT_DIRECTORY ${ZELNO_LIBRARY_DIR}
    RUNTIME_OUTPUT_DIRECTORY ${ZELNO_LIBRARY_DIR}
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_link_options(${name} PRIVATE "LINKER:--no-undefined")
  # The DLL's import library is of no use to anyone who installs zelno.
  install(TARGETS ${name}
          LIBRARY DESTINATION ${ZELNO_INSTALL_LIBRARY_DIR}
          RUNTIME DESTINATION ${ZELNO_INSTALL_LIBRARY_DIR}
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT import_libraries EXCLUDE_FROM_ALL)
endfunction()
