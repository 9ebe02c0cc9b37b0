# What the Debian package holds beyond zelno and the stand-ins, and how CPack
# builds it: `cpack -G DEB` in the build tree.
install(FILES
          ${PROJECT_SOURCE_DIR}/docs/guide.md
          ${PROJECT_SOURCE_DIR}/docs/formats.md
          ${PROJECT_SOURCE_DIR}/docs/simulator.md
          ${PROJECT_SOURCE_DIR}/docs/progress-export.md
          ${PROJECT_SOURCE_DIR}/docs/porting.md
          ${PROJECT_SOURCE_DIR}/docs/capture.png
          ${PROJECT_SOURCE_DIR}/packaging/deb/copyright
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/demo/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zelno/demo)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/scripts/plot-capture
        DESTINATION ${CMAKE_INSTALL_BINDIR} RENAME zelno-plot)
# The PPK2's udev rule, in the folder Debian keeps for packages' rules (the
# administrator's own go to /etc/udev/rules.d and win over it).
install(FILES ${PROJECT_SOURCE_DIR}/packaging/deb/70-zelno-ppk2.rules
        DESTINATION lib/udev/rules.d)

# A native package's changelog, compressed as Debian's tools expect; -n
# leaves the time stamp out, so the same source gives the same file.
set(deb_changelog ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
add_custom_command(
  OUTPUT ${deb_changelog}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
  COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/deb/changelog > ${deb_changelog}
  DEPENDS ${PROJECT_SOURCE_DIR}/packaging/deb/changelog
  VERBATIM)
add_custom_target(zelno_deb_changelog ALL DEPENDS ${deb_changelog})
install(FILES ${deb_changelog} DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(CPACK_PACKAGE_NAME zelno)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "zelno maintainers <zelno@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "console tool for measurement jobs on an embedded target through a debug probe")
set(CPACK_PACKAGE_DESCRIPTION
    "zelno samples a target's energy use into capture files (wattscope) and runs
production tests against limit files (prodtest), interactively or from scripts.
It measures with a Power Profiler Kit II, and comes with a probe simulator
that needs no hardware.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gnuplot-nox | gnuplot")
# Depends comes from dpkg-shlibdeps when cpack runs, in this file.
configure_file(${PROJECT_SOURCE_DIR}/packaging/deb/depends.cmake.in
               ${CMAKE_BINARY_DIR}/packaging/depends.cmake.in @ONLY)
file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/packaging/depends.cmake
     INPUT ${CMAKE_BINARY_DIR}/packaging/depends.cmake.in)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_BINARY_DIR}/packaging/depends.cmake)
include(CPack)
