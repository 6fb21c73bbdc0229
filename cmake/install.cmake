# cmake --install: the library, its header, the command.
install(TARGETS VornelBlCore LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                             RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${CMAKE_SOURCE_DIR}/include/VornelBlCore.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
if(TARGET vornel)
  install(TARGETS vornel RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
