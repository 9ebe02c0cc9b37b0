# zelno(1) and zelno-plot(1), made from docs/*.1.md by pandoc and installed
# compressed, as Debian's man-db expects. Without pandoc the build goes on
# with no man page, and says so: the package test then fails rather than
# ship without one.
find_program(ZELNO_PANDOC pandoc)
if(NOT ZELNO_PANDOC)
  message(WARNING "pandoc not found: no man page is built or installed (scripts/install-deps installs it)")
  return()
endif()

set(man_pages)
foreach(name zelno zelno-plot)
  set(man_source ${PROJECT_SOURCE_DIR}/docs/${name}.1.md)
  set(man_page ${CMAKE_BINARY_DIR}/man/${name}.1)
  add_custom_command(
    OUTPUT ${man_page}.gz
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
    COMMAND ${ZELNO_PANDOC} --standalone --to man
            --metadata footer=zelno\ ${PROJECT_VERSION} -o ${man_page} ${man_source}
    # -n leaves the time stamp out, so the same source gives the same file.
    COMMAND gzip -9nf ${man_page}
    DEPENDS ${man_source}
    COMMENT "Making the man page ${name}(1)"
    VERBATIM)
  list(APPEND man_pages ${man_page}.gz)
endforeach()
add_custom_target(zelno_man ALL DEPENDS ${man_pages})
install(FILES ${man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
