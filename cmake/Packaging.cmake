# `scripts/package`: a Debian package of everything the install rules put under the prefix.
set(CPACK_GENERATOR DEB)
# Packaging builds only what it installs (scripts/package), not the tests.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_NAME quorla)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Quorla developers")
set(CPACK_PACKAGE_CONTACT "Quorla developers <packages@quorla.app>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "dictate into any application with your own OpenAI key")
set(CPACK_PACKAGE_DESCRIPTION
    "Quorla lives in the tray. Hold the trigger key, speak and release: the text is\n"
    "transcribed by the OpenAI speech service with your own API key, optionally\n"
    "cleaned up and translated, and typed into the application you were using.\n"
    "The doctor command checks the session, microphone, keyring and service.")
string(JOIN "" CPACK_PACKAGE_DESCRIPTION ${CPACK_PACKAGE_DESCRIPTION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://quorla.app")
# Libraries from the binaries; the QML modules the window loads at run time are not
# linked, so they are named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qml6-module-qtqml, qml6-module-qtquick, qml6-module-qtquick-controls, qml6-module-qtquick-layouts, \
qml6-module-qtquick-window, qml6-module-qtqml-workerscript, qml6-module-qtquick-templates, \
qml6-module-qtquick-dialogs, qt6-qpa-plugins, libqt6svg6, at-spi2-core")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gnome-keyring | kwalletmanager | keepassxc, pulseaudio | pipewire-pulse")
include(CPack)
