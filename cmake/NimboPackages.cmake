# Debian packages, one for each component of the installation: cpack --preset package.

set(CPACK_PACKAGE_CONTACT "Nimbo platform drivers <drivers@nimbo.example>")
set(CPACK_PACKAGE_DESCRIPTION "Drivers of the Halvorsa switch board, and what reaches its buses.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What packages need of one another they say themselves.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${CMAKE_BINARY_DIR}/smbus/client ${CMAKE_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# nimbo_package(COMPONENT PACKAGE SECTION SUMMARY [package that it needs]...)
function(nimbo_package component package section summary)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_COMPONENT_${key}_DESCRIPTION ${summary} PARENT_SCOPE)
  install(FILES ${CMAKE_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
    RENAME copyright COMPONENT ${component})
  list(TRANSFORM ARGN REPLACE "^lib(nimbo|smbus).*" "\\0 (= ${PROJECT_VERSION})")
  list(JOIN ARGN ", " needed)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${needed}" PARENT_SCOPE)
endfunction()

nimbo_package(client libsmbusproto0 libs "Client of the SMBus service")
nimbo_package(drivers libnimbo-drivers-halvorsa0 libs "Drivers of the Halvorsa switch board"
  libsmbusproto0)
nimbo_package(smbusd smbusd admin "SMBus service, with a virtual board" libsmbusproto0)
nimbo_package(nimbo nimbo admin "Host of the drivers on the command line"
  libnimbo-drivers-halvorsa0)
nimbo_package(dev nimbo-dev libdevel "Headers for hosts and for clients of the SMBus service"
  libnimbo-drivers-halvorsa0 libsmbusproto0 libprotobuf-dev)
set(CPACK_COMPONENTS_ALL client drivers smbusd nimbo dev)
if(NIMBO_IPMI)
  nimbo_package(ipmi libnimbo-ipmi libs "IPMI back-end of the drivers"
    libnimbo-drivers-halvorsa0 freeipmi-tools)
  list(APPEND CPACK_COMPONENTS_ALL ipmi)
endif()

set(CPACK_DEBIAN_SMBUSD_PACKAGE_CONTROL_EXTRA
  ${CMAKE_SOURCE_DIR}/smbus/service/systemd/postinst
  ${CMAKE_SOURCE_DIR}/smbus/service/systemd/prerm
  ${CMAKE_SOURCE_DIR}/smbus/service/systemd/postrm)

include(CPack)
