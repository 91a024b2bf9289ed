# The Debian package (`./kdx package`, or `cpack -G DEB` in a build folder): everything
# KdxInstall.cmake installs, under /usr, with Debian's own Qt packages as dependencies.
set(KDX_PACKAGE_CONTACT "KDX Tool maintainers <maintainers@example.org>"
    CACHE STRING "Maintainer field of the Debian package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kdx-tool)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${KDX_PACKAGE_CONTACT})
set(CPACK_PACKAGE_VENDOR "KDX Tool")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "configure, tune and monitor KDX brushless motor drivers")
# The long description; CPack puts the summary line above it and indents it.
set(CPACK_PACKAGE_DESCRIPTION
  "KDX Tool talks to a KDX gimbal motor driver over a serial line, directly or
through a Q-Vane gimbal controller. It reads, edits, writes and backs up the
module's configuration, shows and logs live telemetry, replays and trims
recordings, drives the motors in test mode and plots rate and error while the
gains are tuned on the running module.

kdxctl does the same jobs from a shell, for scripts and production lines, and
runs a simulated module on a pseudo-terminal, so everything can be tried
without hardware.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)

# dpkg-shlibdeps (dpkg-dev, pulled in by build-essential) derives the library
# dependencies with their minimum versions from the binaries themselves. Without it the
# list is written out; Qt 6.4 is the oldest Qt the program builds with.
find_program(KDX_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(KDX_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
elseif(KDX_GUI)
  set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 12), libqt6core6 (>= 6.4), libqt6gui6 (>= 6.4), libqt6widgets6 (>= 6.4), libqt6serialport6 (>= 6.4), libqt6svg6 (>= 6.4)")
else()
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 12)")
endif()
if(KDX_GUI)
  # Without it Qt runs through XWayland on a Wayland desktop, which works as well.
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-wayland")
endif()

include(CPack)
