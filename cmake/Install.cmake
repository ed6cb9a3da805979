# What an installed copy holds. Nothing in it names the place where it was installed, so it may be moved.
include(CMakePackageConfigHelpers)

set(TESSARET_DATA_DIR "${CMAKE_INSTALL_DATADIR}/tessaret")
set(packageDir "${CMAKE_INSTALL_LIBDIR}/cmake/Tessaret")

install(TARGETS tessaret EXPORT TessaretTargets FILE_SET HEADERS)
install(EXPORT TessaretTargets NAMESPACE Tessaret:: DESTINATION "${packageDir}")
configure_package_config_file(cmake/TessaretConfig.cmake.in "${PROJECT_BINARY_DIR}/TessaretConfig.cmake"
  INSTALL_DESTINATION "${packageDir}" PATH_VARS TESSARET_DATA_DIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TessaretConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/TessaretConfig.cmake"
  "${PROJECT_BINARY_DIR}/TessaretConfigVersion.cmake"
  DESTINATION "${packageDir}")

set(pkgConfigDir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH TESSARET_PC_UP "/${pkgConfigDir}" "/")
string(REGEX REPLACE "/$" "" TESSARET_PC_UP "${TESSARET_PC_UP}")
configure_file(cmake/tessaret.pc.in "${PROJECT_BINARY_DIR}/tessaret.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tessaret.pc" DESTINATION "${pkgConfigDir}")

# The Python package, where Debian's Python looks for packages when the prefix is /usr.
set(TESSARET_PYTHON_DIR "lib/python3/dist-packages" CACHE STRING "Folder for the Python package, below the prefix")
install(DIRECTORY bindings/python/tessaret DESTINATION "${TESSARET_PYTHON_DIR}"
  FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)

# The codec library lies beside the library, which finds it there by its name.
if(TARGET tessaret_codec_library)
  install(TARGETS tessaret_codec_library LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()

# The tool with its man pages and completions, which its build writes below share/.
if(TARGET tessaret_tool)
  install(TARGETS tessaret_tool)
  install(DIRECTORY "${PROJECT_BINARY_DIR}/share/man/" DESTINATION "${CMAKE_INSTALL_MANDIR}" OPTIONAL)
  foreach(completions bash-completion/completions zsh/site-functions fish/vendor_completions.d)
    install(DIRECTORY "${PROJECT_BINARY_DIR}/share/${completions}/"
      DESTINATION "${CMAKE_INSTALL_DATADIR}/${completions}" OPTIONAL)
  endforeach()
endif()
