# Packages of the two libraries, versioned from the release settings at the
# top of CMakeLists.txt.
#   .deb  libzanvcMAJOR      the two shared libraries
#         libzanvc-dev       headers, .so links, pkg-config file, CMake package
#   .tar.gz                  both, under usr/
set(CPACK_PACKAGE_NAME zanvc)
set(CPACK_PACKAGE_VENDOR "zanvc developers")
set(CPACK_PACKAGE_CONTACT "zanvc developers <zanvc@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "video-coding primitives (SSE2/SSSE3) and their platform layer")
set(CPACK_COMPONENT_DEV_DESCRIPTION "headers, pkg-config file and CMake package of zanvc")
set(CPACK_COMPONENT_DEV_DEPENDS runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${ZANVC_BUILD_NUMBER})
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
set(ZANVC_DEB_RUNTIME libzanvc${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${ZANVC_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6 (>= 2.17)")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libzanvc-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "${ZANVC_DEB_RUNTIME} (= ${PROJECT_VERSION}-${ZANVC_BUILD_NUMBER}), pkg-config | pkgconf")

set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_ARCHIVE_FILE_NAME zanvc-${PROJECT_VERSION}-r${ZANVC_BUILD_NUMBER}-linux-x86_64)
set(CPACK_PACKAGE_FILE_NAME zanvc-${PROJECT_VERSION}-r${ZANVC_BUILD_NUMBER}-linux-x86_64)
include(CPack)
