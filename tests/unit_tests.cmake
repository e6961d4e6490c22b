# The tests of the parts.

# GoogleTest from Debian's source package: one way for the native and the Windows build.
set(BUILD_GMOCK OFF)
set(INSTALL_GTEST OFF)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
target_compile_options(gtest PRIVATE -O0 -fno-sanitize=all) # builds in a fifth of the time

file(GLOB_RECURSE unit_sources CONFIGURE_DEPENDS
    api/*.cpp common/*.cpp detect/*.cpp audio/*.cpp text/*.cpp video/*.cpp picture/*.cpp container/*.cpp host/*.cpp support/*.cpp)
add_executable(unit_tests ${unit_sources}
    $<TARGET_OBJECTS:zat_portable> $<TARGET_OBJECTS:zat_platform> $<TARGET_OBJECTS:zat_host>)
target_include_directories(unit_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/host)
target_include_directories(unit_tests SYSTEM PRIVATE ${CMAKE_BINARY_DIR}/headers)
target_link_libraries(unit_tests PRIVATE zat_options GTest::gtest_main ${CMAKE_DL_LIBS})
# Builds in a fifth of the time: unoptimised, and several tests as one source; each has its namespace.
target_compile_options(unit_tests PRIVATE -O0)
set_target_properties(unit_tests PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
target_precompile_headers(unit_tests PRIVATE
    <gtest/gtest.h> <algorithm> <fstream> <memory> <string> <vector>)

# The shipped catalogue as bytes: the Windows build of the tests runs where no source path holds.
set(catalogue ${PROJECT_SOURCE_DIR}/catalogue/zat-codec.ini)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${catalogue})
file(READ ${catalogue} catalogue_hex HEX)
string(REGEX REPLACE "(..)" "0x\\1," catalogue_bytes "${catalogue_hex}")
set(catalogue_source ${CMAKE_CURRENT_BINARY_DIR}/shipped_catalogue.cpp)
file(CONFIGURE OUTPUT ${catalogue_source} CONTENT
    "#include \"support/shipped_catalogue.h\"\nconst std::vector<uint8_t> zat::test::shipped_catalogue{@catalogue_bytes@};\n"
    @ONLY)
target_sources(unit_tests PRIVATE ${catalogue_source})

if(WIN32)
    add_test(NAME windows_unit_tests
        COMMAND ${PROJECT_SOURCE_DIR}/tools/wine-run $<TARGET_FILE:unit_tests> --gtest_brief=1)
    set_tests_properties(windows_unit_tests PROPERTIES COST 200) # the longest start first
else()
    include(GoogleTest)
    gtest_discover_tests(unit_tests DISCOVERY_MODE PRE_TEST)

    # The library over a file layer that fails.
    add_executable(fault_tests faults/faults_test.cpp support/temp_file.cpp
        $<TARGET_OBJECTS:zat_fuzz_memory> $<TARGET_OBJECTS:zat_portable>)
    target_compile_options(fault_tests PRIVATE -O0)
    target_include_directories(fault_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests ${PROJECT_SOURCE_DIR}/fuzz)
    target_link_libraries(fault_tests PRIVATE zat_options GTest::gtest_main)
    target_compile_definitions(fault_tests PRIVATE ZAT_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    gtest_discover_tests(fault_tests DISCOVERY_MODE PRE_TEST)

    # Several threads in the library at once, against one alone; with preset linux-tsan the proof.
    find_package(Threads REQUIRED)
    add_executable(thread_test threads/thread_test.cpp $<TARGET_OBJECTS:zat_portable> $<TARGET_OBJECTS:zat_platform>)
    target_link_libraries(thread_test PRIVATE zat_options Threads::Threads)
    add_test(NAME threads COMMAND thread_test ${PROJECT_SOURCE_DIR}/catalogue/ ${PROJECT_SOURCE_DIR}/fuzz/seeds)

    add_test(NAME lint COMMAND ${PROJECT_SOURCE_DIR}/tools/lint)
    set_tests_properties(lint PROPERTIES COST 200)
    add_test(NAME code_tables COMMAND ${PROJECT_SOURCE_DIR}/tools/make-code-tables --check)
endif()
