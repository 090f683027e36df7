# ovik_warnings(TARGET): turns on the project's warnings, which its own code must not cause.
function(ovik_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wconversion)
    if(OVIK_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
