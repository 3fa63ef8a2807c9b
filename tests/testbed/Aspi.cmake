# The fall-back transport in the test bed (aspi_fallback.py): the guest program and plattmix-cli's
# drive commands linked dynamically, so that the transport can load its layer library there.
# plattmix-cli itself makes the ISO image for the boot with both drivers.
add_executable(testbed_aspi testbed_aspi_main.cpp AspiChecks.cpp AspiWindowChecks.cpp
                            CommandLineChecks.cpp SideBySideChecks.cpp
                            ${PROJECT_SOURCE_DIR}/app/window/MountPoint.cpp
                            ${PROJECT_SOURCE_DIR}/app/window/TransportChoice.cpp)
target_include_directories(testbed_aspi PRIVATE ${PROJECT_SOURCE_DIR}/app/window
                                                ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(testbed_aspi PRIVATE plattmix_audiocd plattmix_scsi plattmix_vdrive)
add_executable(testbed_cli_shared testbed_cli_main.cpp)
target_link_libraries(testbed_cli_shared PRIVATE plattmix_cli_drives)
add_dependencies(testbed_aspi plattmix_aspi)

add_test(NAME testbed.aspi
         COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/aspi_fallback.py
                 --program $<TARGET_FILE:testbed_aspi> --cli $<TARGET_FILE:testbed_cli_shared>
                 --iso-cli $<TARGET_FILE:plattmix-cli>
                 --layer $<TARGET_FILE:plattmix_aspi>
                 --script ${CMAKE_CURRENT_SOURCE_DIR}/aspi_guest.sh
                 --work ${CMAKE_CURRENT_BINARY_DIR}/aspi)
set_tests_properties(testbed.aspi PROPERTIES TIMEOUT 600 LABELS testbed)
