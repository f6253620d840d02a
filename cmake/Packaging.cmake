# SPDX-License-Identifier: Apache-2.0

# The Debian package. Some files have a fixed path outside the prefix, so everything is installed below a folder of
# CPack's (DESTDIR).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME marrowby-unlock)
set(CPACK_PACKAGE_CONTACT "Marrowby Unlock developers <unlock@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Unlocks the screen with your face")
set(CPACK_PACKAGE_DESCRIPTION "Looks for its user with the camera when they come back to the locked
screen, makes sure that it is a live face and one of those enrolled, and
types the login password. Faces and the password are kept encrypted, under
a key in the keyring of the desktop's session.
.
The models that recognise faces are not part of the package: a command
downloads and prepares them.")
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# For the script that prepares the models.
set(CPACK_DEBIAN_PACKAGE_DEPENDS python3)
# Used over D-Bus: polkit and the keyring. Also: draws the icon, prepares models.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "polkitd, gnome-keyring, libqt6svg6, python3-onnx, python3-numpy")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS qt6-wayland)
file(WRITE ${PROJECT_BINARY_DIR}/conffiles "/etc/pam.d/marrowby-unlock\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Debian wants a changelog of the package; docs/CHANGELOG.md is the program's. SOURCE_DATE_EPOCH dates it.
string(TIMESTAMP today "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/changelog "marrowby-unlock (${PROJECT_VERSION}) unstable; urgency=medium

  * What is new stands in CHANGELOG.md.

 -- ${CPACK_PACKAGE_CONTACT}  ${today}
")
execute_process(COMMAND gzip -9nc ${PROJECT_BINARY_DIR}/changelog OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz
    COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${PROJECT_BINARY_DIR}/changelog.gz ${PROJECT_SOURCE_DIR}/docs/CHANGELOG.md
    DESTINATION share/doc/marrowby-unlock)
include(CPack)
