# Each of the platform's D-Bus interfaces has an introspection file. The product's clients and the
# simulated panel's adaptors are generated from the same files.

set(OVIK_DBUS_INTERFACE_DIR ${PROJECT_SOURCE_DIR}/dbus_ovik/interfaces)

# ovik_dbus_clients(SOURCES_VAR): generates a client class for every interface. Its name is
# ComWenuOVIK + the interface's last name component + Interface, with these exceptions:
set(OVIK_DBUS_CLIENT_com.wenu.OVIK ComWenuOVIKGeneratedInterface) # extended in ComWenuOVIKInterface.h
set(OVIK_DBUS_CLIENT_com.wenu.OVIK.Leds ComWenuOVIKPlatformLedsInterface)
set(OVIK_DBUS_CLIENT_com.wenu.OVIK.Sensors ComWenuOVIKPlatformSensorsInterface)

function(ovik_dbus_clients sources_var)
    file(GLOB files CONFIGURE_DEPENDS ${OVIK_DBUS_INTERFACE_DIR}/*.xml)
    foreach(file ${files})
        get_filename_component(interface ${file} NAME_WLE)
        string(REGEX REPLACE ".*\\." "" last ${interface})
        set(class ComWenuOVIK${last}Interface)
        if(DEFINED OVIK_DBUS_CLIENT_${interface})
            set(class ${OVIK_DBUS_CLIENT_${interface}})
        endif()
        set_source_files_properties(${file} PROPERTIES
            CLASSNAME ${class}
            NO_NAMESPACE TRUE
            INCLUDE dbus_ovik/OVIKDBusRecords.h)
        qt5_add_dbus_interface(sources ${file} ${class})
    endforeach()
    set(${sources_var} ${sources} PARENT_SCOPE)
endfunction()

# ovik_dbus_adaptor(SOURCES_VAR INTERFACE HEADER PARENT): generates the adaptor class that answers
# INTERFACE by calling the methods of PARENT, declared in HEADER. Its name is the interface's last
# name component + Adaptor.
function(ovik_dbus_adaptor sources_var interface header parent)
    set(sources ${${sources_var}})
    string(REGEX REPLACE ".*\\." "" last ${interface})
    qt5_add_dbus_adaptor(sources ${OVIK_DBUS_INTERFACE_DIR}/${interface}.xml
        ${header} ${parent} ${last}Adaptor ${last}Adaptor)
    set(${sources_var} ${sources} PARENT_SCOPE)
endfunction()
