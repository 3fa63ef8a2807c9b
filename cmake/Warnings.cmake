# Warnings for every target of the project; the sanitizer flags when asked for.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Woverloaded-virtual
                    -Wnull-dereference -Wimplicit-fallthrough)
if(PLATTMIX_WERROR)
    add_compile_options(-Werror)
    # GCC 12 at -O2 reports overlapping copies and null pointers inside libstdc++'s own string
    # and vector code after inlining (GCC bugs 105329, 105651); they stay warnings there.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        add_compile_options($<$<NOT:$<CONFIG:Debug>>:-Wno-error=restrict>
                            $<$<NOT:$<CONFIG:Debug>>:-Wno-error=null-dereference>)
    endif()
endif()
if(PLATTMIX_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
