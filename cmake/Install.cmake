include(GNUInstallDirs)
install(TARGETS kqu-messenger kqu-post RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
