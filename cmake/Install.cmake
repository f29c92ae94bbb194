# What is installed, and where. Everything lies below the prefix; the places that the desktop's own
# services look in can be set, for prefixes that they do not look in. docs/packaging.md lists all.
include(GNUInstallDirs)

set(KQU_SYSTEMD_USER_UNIT_DIR lib/systemd/user CACHE STRING
    "Folder of the systemd units of the users' service managers")
set(KQU_DBUS_SERVICE_DIR ${CMAKE_INSTALL_DATADIR}/dbus-1/services CACHE STRING
    "Folder of the D-Bus services of session buses")
set(KQU_DBUS_POLICY_DIR ${CMAKE_INSTALL_DATADIR}/dbus-1/system.d CACHE STRING
    "Folder of the policies of the D-Bus system bus")
set(KQU_DBUS_INTERFACE_DIR ${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces CACHE STRING
    "Folder of the descriptions of D-Bus interfaces")
set(KQU_BASH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/bash-completion/completions CACHE STRING
    "Folder of bash's completions")
set(KQU_ZSH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Folder of zsh's completions")
set(KQU_FISH_COMPLETION_DIR ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d CACHE STRING
    "Folder of fish's completions")

set(KQU_APPLICATION com.brackwater.KQU_Messenger)

# A command from post/, with its manual page and its completions.
function(kqu_install_command NAME)
  install(TARGETS ${NAME} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES post/${NAME}/${NAME}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES packaging/completion/${NAME}.bash
          DESTINATION ${KQU_BASH_COMPLETION_DIR} RENAME ${NAME})
  install(FILES packaging/completion/${NAME}.zsh
          DESTINATION ${KQU_ZSH_COMPLETION_DIR} RENAME _${NAME})
  install(FILES packaging/completion/${NAME}.fish DESTINATION ${KQU_FISH_COMPLETION_DIR})
endfunction()

kqu_install_command(kqu-post)
kqu_install_command(kqu-run)

install(TARGETS kqu-messenger RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES main/kqu-messenger.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

foreach(FILE ${KQU_APPLICATION}.service kqu-messenger.service)
  configure_file(packaging/${FILE}.in packaging/${FILE} @ONLY)
endforeach()
install(FILES ${CMAKE_BINARY_DIR}/packaging/${KQU_APPLICATION}.service
        DESTINATION ${KQU_DBUS_SERVICE_DIR})
install(FILES ${CMAKE_BINARY_DIR}/packaging/kqu-messenger.service
        DESTINATION ${KQU_SYSTEMD_USER_UNIT_DIR})
install(FILES packaging/com.brackwater.DistributedNotifications.conf
        DESTINATION ${KQU_DBUS_POLICY_DIR})
install(FILES packaging/com.brackwater.DistributedNotifications.xml
        DESTINATION ${KQU_DBUS_INTERFACE_DIR})

install(FILES packaging/${KQU_APPLICATION}.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES packaging/${KQU_APPLICATION}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
set(ICONS ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES resources/kqu-messenger.svg DESTINATION ${ICONS}/scalable/apps
        RENAME ${KQU_APPLICATION}.svg)
foreach(SIZE 16 32 48 128 256)
  install(FILES resources/kqu-messenger-${SIZE}.png DESTINATION ${ICONS}/${SIZE}x${SIZE}/apps
          RENAME ${KQU_APPLICATION}.png)
endforeach()

# The program finds its own description beside its folder: share/kqu-messenger, seen from bin/.
configure_file(main/Info.plist.in main/Info.plist @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/main/Info.plist DESTINATION ${CMAKE_INSTALL_DATADIR}/kqu-messenger)
