# Hardens everything that is built after this is included. Sanitizers bring checks of their own, and
# some of these would be in their way: their presets turn it off.
option(OVIK_HARDENING "Harden the programs: PIE, full RELRO, stack protector, checked libc calls" ON)
if(OVIK_HARDENING)
    include(CheckPIESupported)
    check_pie_supported()
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    add_compile_options(-fstack-protector-strong)
    # Of no use, and a warning, where nothing is optimised. An SDK may have a level of its own.
    if(NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES _FORTIFY_SOURCE)
        set(optimised $<OR:$<CONFIG:Release>,$<CONFIG:RelWithDebInfo>,$<CONFIG:MinSizeRel>>)
        add_compile_options($<${optimised}:-D_FORTIFY_SOURCE=2>)
    endif()
    add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()

# What a program or library offers to others is marked in its source; nothing else is.
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
