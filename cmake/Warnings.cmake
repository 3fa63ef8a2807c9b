# Warnings for every target of the project; the sanitizer flags when asked for.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wnon-virtual-dtor -Wold-style-cast -Wcast-align -Woverloaded-virtual
                    -Wnull-dereference -Wimplicit-fallthrough)
if(PLATTMIX_WERROR)
    add_compile_options(-Werror)
endif()
if(PLATTMIX_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
