# Every program built for Windows runs with UTF-8 as its process code page:
# with this manifest each ...A call of the program and of the DLLs it loads
# (argtable2, the use-case libraries, the C runtime's file calls) takes and
# gives UTF-8, so a file name in a script is the bytes the user typed, as on
# Linux. Windows 10 1903 and later honour it, and so does Wine; older
# Windows ignore it and use the system's ANSI code page.
set(ZELNO_UTF8_MANIFEST_RC ${CMAKE_BINARY_DIR}/utf8-code-page.rc)
# Resource 1 of type 24 (RT_MANIFEST): the manifest the loader reads when it
# creates the process.
file(WRITE ${ZELNO_UTF8_MANIFEST_RC}
     "1 24 \"${CMAKE_CURRENT_LIST_DIR}/utf8-code-page.manifest\"\n")

# Adds the manifest to each executable defined in DIR and below, so that a
# new test program or tool gets it without a line of its own.
function(zelno_add_utf8_manifest dir)
  get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      target_sources(${target} PRIVATE ${ZELNO_UTF8_MANIFEST_RC})
      # windres reads the manifest; a change to it compiles the resource again.
      set_source_files_properties(${ZELNO_UTF8_MANIFEST_RC} TARGET_DIRECTORY ${target}
        PROPERTIES OBJECT_DEPENDS ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/utf8-code-page.manifest)
    endif()
  endforeach()
  get_property(subdirectories DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
  foreach(subdirectory IN LISTS subdirectories)
    zelno_add_utf8_manifest(${subdirectory})
  endforeach()
endfunction()
