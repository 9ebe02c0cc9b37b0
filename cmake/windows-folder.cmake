# What `cmake --install` puts beside zelno.exe and the DLLs in bin/, for a
# folder that can be zipped and run on Windows as it is: the demo files and
# the user documentation. No package manager there, so no share/ layout.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/demo/ DESTINATION demo)
install(FILES
          ${PROJECT_SOURCE_DIR}/docs/guide.md
          ${PROJECT_SOURCE_DIR}/docs/formats.md
          ${PROJECT_SOURCE_DIR}/docs/simulator.md
          ${PROJECT_SOURCE_DIR}/docs/capture.png
        DESTINATION doc)
