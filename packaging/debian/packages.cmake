# Debian packages, one per install component.
set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PACKAGE_CONTACT "ovik_server maintainers <maintainers@example.com>")
if(CMAKE_CROSSCOMPILING)
    execute_process(COMMAND dpkg-architecture -t${CMAKE_LIBRARY_ARCHITECTURE} -qDEB_HOST_ARCH
        OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
        ${CMAKE_SYSROOT}/lib/${CMAKE_LIBRARY_ARCHITECTURE}
        ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()

set(changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
add_custom_command(OUTPUT ${changelog}
    COMMAND sh -c "gzip -9nc '${CMAKE_CURRENT_LIST_DIR}/changelog' >'${changelog}'"
    DEPENDS ${CMAKE_CURRENT_LIST_DIR}/changelog VERBATIM)
add_custom_target(changelog ALL DEPENDS ${changelog})

# ovik_package(COMPONENT SECTION SUMMARY DESCRIPTION [NAME]): the package of an install component,
# by default named "ovik-" and the component.
macro(ovik_package component section summary description)
    string(REPLACE _ - name ovik-${component})
    if(${ARGC} GREATER 4)
        set(name ${ARGV4})
    endif()
    string(TOUPPER ${component} id)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${id}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${id}_PACKAGE_SECTION ${section})
    set(CPACK_COMPONENT_${id}_DESCRIPTION "${summary}\n${description}")
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright ${changelog}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
    if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/${name}.lintian-overrides)
        install(FILES ${CMAKE_CURRENT_LIST_DIR}/${name}.lintian-overrides
            DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${name}
            COMPONENT ${component})
    endif()
endmacro()

ovik_package(server misc "operator panel facilities behind a local socket"
"Answers short text requests over a Unix-domain socket, for a control
runtime that cannot link the panel's own libraries: buzzer, backlight,
EEPROMs, parameters, counters, storage, network, plug-in modules and
system services. It forwards them to the platform's D-Bus service.")
set(CPACK_DEBIAN_SERVER_PACKAGE_RECOMMENDS "dbus")
set(CPACK_DEBIAN_SERVER_PACKAGE_SUGGESTS "ovik-tools")
set(CPACK_DEBIAN_SERVER_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_LIST_DIR}/postinst
    ${CMAKE_CURRENT_LIST_DIR}/prerm
    ${CMAKE_CURRENT_LIST_DIR}/postrm)

ovik_package(tools utils "command-line client of ovik_server"
"ovikctl sends requests to the service from a shell or a prompt of its
own, watches values, waits for the service and the platform, and finds
out what is wrong when they do not answer.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "ovik-server")

ovik_package(client libs "client library of ovik_server"
"Sends requests to the service from C and C++, with deadlines and many at
a time. This package contains the shared library." libovik-client1)
set(CPACK_DEBIAN_CLIENT_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_LIST_DIR}/libovik-client1/shlibs
    ${CMAKE_CURRENT_LIST_DIR}/libovik-client1/triggers)

ovik_package(client_dev libdevel "client library of ovik_server, development files"
"Sends requests to the service from C and C++, with deadlines and many at
a time. This package contains the header, the static library, the manual page
and examples." libovik-client-dev)
set(CPACK_DEBIAN_CLIENT_DEV_PACKAGE_DEPENDS "libovik-client1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_CLIENT_DEV_PACKAGE_SUGGESTS "ovik-server")

ovik_package(panel_sim devel "simulated operator panel for ovik_server"
"ovik_panel_sim owns the platform's name on the system bus and answers as
a panel would, from memory. It is for trying ovik_server, and what talks
to it, on a machine without the hardware. A panel does not need it.")
set(CPACK_DEBIAN_PANEL_SIM_PACKAGE_DEPENDS "dbus | dbus-daemon")

include(CPack)
