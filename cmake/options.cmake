# What every target of the project is compiled with; linked as zat_options.
add_library(zat_options INTERFACE)
target_compile_options(zat_options INTERFACE -Wall -Wextra -Wconversion -Wshadow)
if(ZAT_BUILD_TESTS) # whoever only builds must not fail at what another compiler's version warns of
    target_compile_options(zat_options INTERFACE -Werror)
endif()
# Clang's -Wconversion takes in what GCC keeps apart.
target_compile_options(zat_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)
target_compile_definitions(zat_options INTERFACE _FILE_OFFSET_BITS=64)
target_include_directories(zat_options INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)

if(WIN32)
    target_link_options(zat_options INTERFACE -static)
    # The same bytes whenever it is linked (tools/check-reproducible).
    target_link_options(zat_options INTERFACE -Wl,--no-insert-timestamp)
endif()
if(ZAT_SANITIZE)
    add_compile_options(-fsanitize=${ZAT_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${ZAT_SANITIZERS})
    if(CMAKE_CXX_COMPILER_ID STREQUAL Clang) # for the programs in C that load the library
        add_link_options(-fsanitize-link-c++-runtime $<$<LINK_LANGUAGE:C>:-lstdc++>)
    endif()
endif()
