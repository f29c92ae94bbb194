include(GNUInstallDirs)
install(TARGETS kqu-messenger kqu-post kqu-run RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES post/kqu-post/kqu-post.1 post/kqu-run/kqu-run.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES main/Info.plist DESTINATION ${CMAKE_INSTALL_DATADIR}/kqu-messenger)
