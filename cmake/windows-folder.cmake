# What `cmake --install` puts beside zelno.exe and the DLLs in bin/, for a
# folder that can be zipped and run on Windows as it is: the demo files, the
# user documentation and the licences. No package manager there, so no
# share/ layout.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/demo/ DESTINATION demo)
install(FILES
          ${PROJECT_SOURCE_DIR}/docs/guide.md
          ${PROJECT_SOURCE_DIR}/docs/formats.md
          ${PROJECT_SOURCE_DIR}/docs/simulator.md
          ${PROJECT_SOURCE_DIR}/docs/progress-export.md
          ${PROJECT_SOURCE_DIR}/docs/porting.md
          ${PROJECT_SOURCE_DIR}/docs/capture.png
          ${PROJECT_SOURCE_DIR}/packaging/windows/copyright
        DESTINATION doc)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION .)

# The folder is for users: its programs and DLLs go without symbols and
# debug sections (a fifth of the size), whether or not --strip is given; the
# build tree keeps them for debugging. This runs after bin/ is installed.
install(CODE "
  file(GLOB binaries \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/*.exe\"
                     \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/*.dll\")
  foreach(binary IN LISTS binaries)
    execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded \"\${binary}\"
                    RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR \"${CMAKE_STRIP} failed on \${binary}\")
    endif()
  endforeach()")
