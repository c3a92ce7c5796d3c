# Installing Tock like any desktop application: the executable, its menu entry, icon and
# software-centre description on Linux, a Debian package through CPack, and Tock.app on macOS.
# Included from the top CMakeLists.txt after src/ui, so the tock target exists.

include(GNUInstallDirs)

# Bump together with project(VERSION): the software centre shows it with the version.
set(TOCK_RELEASE_DATE "2026-11-23")
set(TOCK_HOMEPAGE "https://tock.app" CACHE STRING "Tock's web page, named in the package metadata")
set(TOCK_SCREENSHOTS_URL "${TOCK_HOMEPAGE}/docs/screenshots" CACHE STRING
  "Where docs/screenshots/ of this tree is published; the software centre shows those images")
set(TOCK_MAINTAINER "Tock developers <hello@tock.app>" CACHE STRING "Maintainer of the Debian package")

if(APPLE)
  # The bundle reads its name, identifier and version from here through the plist template.
  set(icns ${PROJECT_SOURCE_DIR}/resources/macos/Tock.icns)
  target_sources(tock PRIVATE ${icns})
  set_source_files_properties(${icns} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  set_target_properties(tock PROPERTIES
    MACOSX_BUNDLE ON
    OUTPUT_NAME Tock
    MACOSX_BUNDLE_INFO_PLIST ${PROJECT_SOURCE_DIR}/resources/macos/Info.plist.in
    MACOSX_BUNDLE_BUNDLE_NAME Tock
    MACOSX_BUNDLE_EXECUTABLE_NAME Tock
    MACOSX_BUNDLE_GUI_IDENTIFIER ${TOCK_APP_ID}
    MACOSX_BUNDLE_ICON_FILE Tock.icns
    MACOSX_BUNDLE_SHORT_VERSION_STRING ${PROJECT_VERSION}
    MACOSX_BUNDLE_BUNDLE_VERSION ${PROJECT_VERSION})
  install(TARGETS tock BUNDLE DESTINATION .)
  return()
endif()

install(TARGETS tock RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(TARGET TockWindow)
  # Private to tock, which opens it for the window modes.
  install(TARGETS TockWindow LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tock)
endif()

if(TOCK_BUILD_UI)
  # Every file a desktop finds Tock by carries the one identifier in its name.
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/desktop)
  configure_file(resources/linux/tock.desktop.in ${generated}/${TOCK_APP_ID}.desktop @ONLY)
  configure_file(resources/linux/tock.metainfo.xml.in ${generated}/${TOCK_APP_ID}.metainfo.xml @ONLY)
  install(FILES ${generated}/${TOCK_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${generated}/${TOCK_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

  set(icons ${PROJECT_SOURCE_DIR}/resources/icons)
  install(FILES ${icons}/tock.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps RENAME ${TOCK_APP_ID}.svg)
  foreach(size 16 32 48 64 128 256 512)
    install(FILES ${icons}/tock-${size}.png
      DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps RENAME ${TOCK_APP_ID}.png)
  endforeach()
endif()

# cpack -G DEB: a package for Debian 12 and its relatives.
set(CPACK_PACKAGE_NAME tock)
set(CPACK_PACKAGE_VENDOR "Tock developers")
set(CPACK_PACKAGE_CONTACT "${TOCK_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${TOCK_TAGLINE}")
# Kept as short lines: the package's control file shows them as written.
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "Tock keeps a short list of named count-up timers in one compact window,\n"
  "drawn in one of seven visual styles. Timers are added, renamed, started,\n"
  "paused, reset, reordered and set by hand or with commands at a built-in\n"
  "prompt, with undo. tock --shell runs the same commands from a terminal.")
set(CPACK_PACKAGE_HOMEPAGE_URL "${TOCK_HOMEPAGE}")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${TOCK_MAINTAINER}")
# The Qt libraries come from the linked executable; the platform plugins that open a window
# are loaded at run time, so no library scan finds them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland")
include(CPack)
