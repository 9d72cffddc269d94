# What every target of the project is compiled with.
add_library(tessarin_options INTERFACE)
target_compile_features(tessarin_options INTERFACE cxx_std_20)
target_include_directories(tessarin_options INTERFACE ${PROJECT_SOURCE_DIR}/include)
# For what may look behind the public headers: the folders of src/, their tests and benchmarks. The
# command-line tool does not link it, so the compiler itself holds the tool to the public interface.
add_library(tessarin_inside INTERFACE)
target_include_directories(tessarin_inside INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(tessarin_inside INTERFACE tessarin_options)
# Everything but the exports is hidden; the static folders end up in the shared library.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_EXTENSIONS OFF)
# A build tree may be moved.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

if(MSVC)
    target_compile_options(tessarin_options INTERFACE /W4 /utf-8 /fp:precise)
    target_compile_definitions(tessarin_options INTERFACE NOMINMAX _CRT_SECURE_NO_WARNINGS)
    if(TESSARIN_WARNINGS_AS_ERRORS)
        target_compile_options(tessarin_options INTERFACE /WX)
    endif()
else()
    # Results depend on the rounding of every operation: products are never fused into sums.
    target_compile_options(tessarin_options INTERFACE
        -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
        -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2 -Wundef)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # It sees overlaps in the string of its own library that cannot be.
        target_compile_options(tessarin_options INTERFACE -Wno-restrict)
    endif()
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        # Records with published virtual operations have no virtual destructor, and their vectors
        # destroy them as what they are.
        target_compile_options(tessarin_options INTERFACE
            -Wno-delete-non-abstract-non-virtual-dtor)
    endif()
    if(TESSARIN_WARNINGS_AS_ERRORS)
        target_compile_options(tessarin_options INTERFACE -Werror)
    endif()
    if(EMSCRIPTEN)
        # The package of UTF8-CPP has a folder of its own; all of /usr/include is the host's.
        find_path(TESSARIN_UTF8 utf8.h PATHS /usr/include/utf8cpp NO_DEFAULT_PATH
            NO_CMAKE_FIND_ROOT_PATH REQUIRED)
        target_include_directories(tessarin_options SYSTEM INTERFACE ${TESSARIN_UTF8})
        target_compile_options(tessarin_options INTERFACE -fwasm-exceptions
            -include ${PROJECT_SOURCE_DIR}/bindings/javascript/native/missing_standard.h)
    endif()
    if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # The archive must serve other compilers too.
        target_compile_options(tessarin_options INTERFACE -ffat-lto-objects)
    endif()
    if(TESSARIN_SANITIZE)
        target_compile_options(tessarin_options INTERFACE
            -fsanitize=${TESSARIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(tessarin_options INTERFACE -fsanitize=${TESSARIN_SANITIZE})
    endif()
    if(TESSARIN_FUZZ_ENGINE)
        target_compile_options(tessarin_options INTERFACE -fsanitize=fuzzer-no-link)
    endif()
endif()
