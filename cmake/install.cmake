# cmake --install: the library, its header, what CMake and pkg-config need to find them, and the
# command with its manual and its completion for bash.
include(CMakePackageConfigHelpers)
set(PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VornelBlCore)

install(TARGETS VornelBlCore EXPORT VornelBlCoreTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(NOT WIN32)
  install(FILES $<TARGET_FILE_DIR:VornelBlCore>/VornelBlCore.so DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
install(FILES ${CMAKE_SOURCE_DIR}/include/VornelBlCore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT VornelBlCoreTargets NAMESPACE Vornel:: DESTINATION ${PACKAGE_DIR})
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/VornelBlCoreConfig.cmake.in
  ${CMAKE_BINARY_DIR}/VornelBlCoreConfig.cmake INSTALL_DESTINATION ${PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/VornelBlCoreConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/VornelBlCoreConfig.cmake
  ${CMAKE_BINARY_DIR}/VornelBlCoreConfigVersion.cmake DESTINATION ${PACKAGE_DIR})

# Paths in the .pc file count from where it lies, so that the installed tree can be moved.
file(RELATIVE_PATH PREFIX_FROM_PC /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_SOURCE_DIR}/cmake/VornelBlCore.pc.in ${CMAKE_BINARY_DIR}/VornelBlCore.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/VornelBlCore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET vornel)
  # The command with the run path of its installed place. CMake could also rewrite that of the built
  # one, but would then make room for it with empty elements, which the loader takes for the current
  # folder.
  add_executable(vornel_to_install $<TARGET_OBJECTS:vornel>)
  target_link_libraries(vornel_to_install PRIVATE vornel_host vornel_flags)
  file(RELATIVE_PATH LIBDIR_FROM_BINDIR /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(vornel_to_install PROPERTIES OUTPUT_NAME vornel LINKER_LANGUAGE CXX
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/to_install
    BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN/${LIBDIR_FROM_BINDIR}")
  install(TARGETS vornel_to_install RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${CMAKE_SOURCE_DIR}/host/share/vornel.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  # bash looks completions up by the name of the command.
  install(FILES ${CMAKE_SOURCE_DIR}/host/share/vornel.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME vornel)
endif()
