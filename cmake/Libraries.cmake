# The system libraries, as the distribution packages them.
find_package(PkgConfig REQUIRED)
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-randr xcb-icccm)
pkg_check_modules(DRAWING REQUIRED IMPORTED_TARGET cairo pango pangocairo gio-2.0 glib-2.0 harfbuzz)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(MOUNT REQUIRED IMPORTED_TARGET mount)
pkg_check_modules(JSON REQUIRED IMPORTED_TARGET json-c)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)

add_library(kqu_drawing_libraries INTERFACE)
target_link_libraries(kqu_drawing_libraries INTERFACE PkgConfig::DRAWING PkgConfig::PLIST)

add_library(kqu_system_libraries INTERFACE)
target_link_libraries(kqu_system_libraries INTERFACE
  PkgConfig::XCB PkgConfig::SYSTEMD PkgConfig::MOUNT PkgConfig::DRAWING)
