# ovik_warnings(TARGET): the warnings that all of the project's own code is clean of.
function(ovik_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wconversion)
    if(OVIK_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
