# The Debian packages, one a component. Build them by `cpack -G DEB` with the preset "packages".
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL agent window camera tunnel)
set(CPACK_PACKAGE_NAME quillmar)
set(CPACK_PACKAGE_CONTACT "Quillmar developers <developers@quillmar.live>")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_AGENT_PACKAGE_NAME quillmar-agent)
set(CPACK_DEBIAN_AGENT_DESCRIPTION "family internet protection for a child's computer, without a window
Makes this computer a child's device of a family and keeps it protected: the
names of all sites are looked up with the family's encrypted DNS service,
through a packet tunnel in NetworkManager.
.
The program shows the enrollment code in a terminal, works as a service of the
user's session, and says what it does. It shares its installation with the
window in the package quillmar, and gives way to it while that is open.")
set(CPACK_DEBIAN_AGENT_PACKAGE_DEPENDS "ca-certificates")
set(CPACK_DEBIAN_AGENT_PACKAGE_RECOMMENDS "network-manager, quillmar-tunnel, systemd")
set(CPACK_DEBIAN_AGENT_PACKAGE_SUGGESTS "quillmar")
set(CPACK_DEBIAN_AGENT_PACKAGE_CONTROL_EXTRA
    "${CMAKE_CURRENT_LIST_DIR}/agent/postinst;${CMAKE_CURRENT_LIST_DIR}/agent/prerm")

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME quillmar)
set(CPACK_DEBIAN_WINDOW_DESCRIPTION "family internet protection: the parent's console, the child's window
On a parent's computer it is the console: account, children and their devices,
filters, browsing activity, the family's other parents and the home network.
.
On a child's computer it shows a code that a parent scans, and then keeps a
packet tunnel in NetworkManager that carries the computer's DNS over HTTPS.
The role is chosen once, when the program first starts.
.
The package quillmar-agent keeps a child's computer protected from login on,
whether this window is open or not.")
# Loaded at run time, so dpkg-shlibdeps doesn't find them.
set(qml_modules qt-labs-folderlistmodel qtqml qtqml-workerscript qtquick qtquick-controls qtquick-dialogs qtquick-layouts
                qtquick-templates qtquick-window)
list(TRANSFORM qml_modules PREPEND qml6-module-)
list(JOIN qml_modules ", " qml_modules)
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "ca-certificates, ${qml_modules}")
string(JOIN ", " CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS
  quillmar-agent quillmar-camera quillmar-tunnel network-manager "gnome-keyring | libkf5wallet-bin | keepassxc" fonts-inter fonts-noto-color-emoji
  libgl1-mesa-dri qt6-wayland xdg-desktop-portal)
set(CPACK_DEBIAN_WINDOW_PACKAGE_SUGGESTS "fprintd")

set(CPACK_DEBIAN_CAMERA_PACKAGE_NAME quillmar-camera)
set(CPACK_DEBIAN_CAMERA_DESCRIPTION "family internet protection: reading codes with the camera
With this the window in the package quillmar scans a child's enrollment code
with the computer's camera. Without it the window reads codes from pictures,
from the clipboard and from the screen.")
# Plugin and program must be of the same build.
set(CPACK_DEBIAN_CAMERA_PACKAGE_DEPENDS
    "quillmar (= ${PROJECT_VERSION}), gstreamer1.0-plugins-base, gstreamer1.0-plugins-good")
# In earlier releases the plugin was part of the window's package.
set(CPACK_DEBIAN_CAMERA_PACKAGE_BREAKS "quillmar (<< 0.2.0)")
set(CPACK_DEBIAN_CAMERA_PACKAGE_REPLACES "quillmar (<< 0.2.0)")

set(CPACK_DEBIAN_TUNNEL_PACKAGE_NAME quillmar-tunnel)
set(CPACK_DEBIAN_TUNNEL_DESCRIPTION "family internet protection: the tunnel for a child's computer
What NetworkManager reaches when a child's computer switches its protection on:
carries all DNS of the computer to the family's service over HTTPS, whatever
server a program asks, and lets none of it out another way.
.
The packages quillmar and quillmar-agent tell it where to ask. Without it a
child's computer is set up but not protected.")
set(CPACK_DEBIAN_TUNNEL_PACKAGE_DEPENDS
    "ca-certificates, dbus | dbus-broker, network-manager, nftables, systemd | systemd-standalone-sysusers | systemd-sysusers")
set(CPACK_DEBIAN_TUNNEL_PACKAGE_CONTROL_EXTRA
    "${CMAKE_CURRENT_LIST_DIR}/tunnel/postinst;${CMAKE_CURRENT_LIST_DIR}/tunnel/prerm;${CMAKE_CURRENT_LIST_DIR}/tunnel/postrm")

include(CPack)
