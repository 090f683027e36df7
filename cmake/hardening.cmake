# Hardens every target built after this file is included. Some options conflict with the sanitizers'
# own checks, so the sanitizers' presets turn hardening off.
option(OVIK_HARDENING "Harden the programs: PIE, full RELRO, stack protector, checked libc calls" ON)
if(OVIK_HARDENING)
    include(CheckPIESupported)
    check_pie_supported()
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    add_compile_options(-fstack-protector-strong)
    # Without optimisation, this only causes a warning. An SDK may set its own level.
    if(NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES _FORTIFY_SOURCE)
        set(optimised $<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>)
        add_compile_options($<${optimised}:-D_FORTIFY_SOURCE=2>)
    endif()
    add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()

# Only symbols that the source marks as exported are visible.
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
