# libFuzzer with AddressSanitizer and UndefinedBehaviorSanitizer: every library is instrumented
# for coverage, the fuzz targets link libFuzzer's driver. Any sanitizer report ends the run.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "PLATTMIX_FUZZ needs clang (-DCMAKE_CXX_COMPILER=clang++)")
endif()
add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
                    -fno-omit-frame-pointer -g)
add_link_options(-fsanitize=address,undefined)
