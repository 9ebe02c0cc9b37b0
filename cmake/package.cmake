# What the Debian package holds beyond zelno and the stand-ins, and how CPack
# builds it: `cpack -G DEB` in the build tree.
install(FILES
          ${PROJECT_SOURCE_DIR}/docs/guide.md
          ${PROJECT_SOURCE_DIR}/docs/formats.md
          ${PROJECT_SOURCE_DIR}/docs/simulator.md
          ${PROJECT_SOURCE_DIR}/docs/capture.png
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/demo/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zelno/demo)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/scripts/plot-capture
        DESTINATION ${CMAKE_INSTALL_BINDIR} RENAME zelno-plot)

set(CPACK_PACKAGE_NAME zelno)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "zelno developers <zelno@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "console tool for measurement jobs on an embedded target through a debug probe")
set(CPACK_PACKAGE_DESCRIPTION
    "zelno samples a target's energy use into capture files (wattscope) and runs
production tests against limit files (prodtest), interactively or from scripts.
It comes with a probe simulator that stands in for the vendor's library.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
# argtable2 is loaded at run time, so no linker-made dependency finds it.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libargtable2-0")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gnuplot-nox | gnuplot")
include(CPack)
