# Where the program is installed, how the desktop gets to know it, and the Debian package (see packaging/README.md).

include(GNUInstallDirs)

set(WEBSMIDE_WEB "https://websmide.example" CACHE STRING "Home page, below which the pictures are published")
set(WEBSMIDE_APPSTREAM_ID "example.websmide.ftp" CACHE STRING "Name of the program in software centres")
set(WEBSMIDE_MAINTAINER "Websmide <ftp@websmide.example>" CACHE STRING "Who answers for the Debian package")

# websmide_install_link(LINK TARGET): both below the prefix; the link is relative, so that the prefix can be moved.
function(websmide_install_link link target)
    cmake_path(ABSOLUTE_PATH link BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE from)
    cmake_path(ABSOLUTE_PATH target BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" OUTPUT_VARIABLE to)
    cmake_path(GET from PARENT_PATH from_folder)
    cmake_path(GET from FILENAME name)
    file(RELATIVE_PATH way "${from_folder}" "${to}")
    string(SHA1 place "${link}")
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/links/${place}")
    file(CREATE_LINK "${way}" "${CMAKE_BINARY_DIR}/links/${place}/${name}" SYMBOLIC)
    cmake_path(GET link PARENT_PATH folder)
    install(FILES "${CMAKE_BINARY_DIR}/links/${place}/${name}" DESTINATION "${folder}")
endfunction()

set(packaging "${CMAKE_CURRENT_SOURCE_DIR}/packaging")
configure_file("${packaging}/metainfo.xml.in" "${CMAKE_BINARY_DIR}/${WEBSMIDE_APPSTREAM_ID}.metainfo.xml" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/${WEBSMIDE_APPSTREAM_ID}.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
install(FILES "${packaging}/websmide-ftp.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
set(icons "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
foreach(size 16 22 24 32 48 64 128 256 512)
    install(FILES "${packaging}/icons/${size}.png" DESTINATION "${icons}/${size}x${size}/apps" RENAME websmide-ftp.png)
endforeach()
install(FILES "${CMAKE_CURRENT_SOURCE_DIR}/forms/main/icons/program.svg" DESTINATION "${icons}/scalable/apps"
    RENAME websmide-ftp.svg)
install(FILES "${packaging}/man/websmide-ftp.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES "${packaging}/man/websmide-ftp.sv.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/sv/man1" RENAME websmide-ftp.1)

# What Debian wants besides belongs to its package only, and the licence to every other installation.
install(FILES "${CMAKE_CURRENT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT licence)
install(FILES "${packaging}/debian/copyright" "${packaging}/debian/changelog" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
    COMPONENT debian EXCLUDE_FROM_ALL)
set(CPACK_INSTALL_CMAKE_PROJECTS "")
foreach(part Unspecified debian)
    list(APPEND CPACK_INSTALL_CMAKE_PROJECTS "${CMAKE_BINARY_DIR}" websmide-ftp ${part} /)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME websmide-ftp)
set(CPACK_PACKAGE_VENDOR Websmide)
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${packaging}/debian/finish.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${packaging}/debian/pack.cmake")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${WEBSMIDE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
if(NOT WEBSMIDE_WEB MATCHES "\\.example(/|$)")
    set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${WEBSMIDE_WEB}")
endif()
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "FTP client in Swedish, with two panels
Websmide's FTP-program is for people who publish home pages. Two panels stand
beside each other, your computer and the server: one file, many, or a whole
folder tree go up and down with progress and abort; files on either side are
renamed, run, viewed and deleted, the local list is filtered by size and time,
and folders become favourites. What happens on the server is told in plain
Swedish, and a help document explains it all.

Passwords and files go over TLS wherever the server has it. A session that
the server ends is opened again, a transfer that breaks goes on where it was,
and what the server has kept is compared with what was sent.

All texts of the program are in Swedish.")
# Linked libraries are found by dpkg-shlibdeps. The icons are SVG, which Qt reads by a plugin.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS libqt6svg6)
# The system's certificates; what GIO, which comes with GLib, knows of file types; a desktop without X.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ca-certificates, shared-mime-info, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
