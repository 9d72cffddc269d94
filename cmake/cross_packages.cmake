# For another system, only libraries without code of their own may come from this machine, and nothing
# else of its headers: they are linked into the build tree, and found there as the packages are that
# Debian has of them. Tests are built with the sources of GoogleTest.
set(headers ${PROJECT_BINARY_DIR}/headers)
set(packages ${PROJECT_BINARY_DIR}/packages)
file(MAKE_DIRECTORY ${headers})
foreach(folder CLI nlohmann utf8cpp)
    if(NOT EXISTS /usr/include/${folder})
        message(FATAL_ERROR "/usr/include/${folder} is missing: install libcli11-dev, "
            "nlohmann-json3-dev and libutfcpp-dev")
    endif()
    file(CREATE_LINK /usr/include/${folder} ${headers}/${folder} SYMBOLIC)
endforeach()
foreach(package CLI11 nlohmann_json)
    file(WRITE ${packages}/${package}Config.cmake
        "if(NOT TARGET ${package}::${package})\n"
        "    add_library(${package}::${package} INTERFACE IMPORTED)\n"
        "    target_include_directories(${package}::${package} INTERFACE ${headers})\n"
        "endif()\n")
    set(${package}_DIR ${packages} CACHE PATH "" FORCE)
endforeach()
include_directories(SYSTEM ${headers}/utf8cpp)
if(TESSARIN_BUILD_TESTS)
    add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    file(WRITE ${packages}/GTestConfig.cmake "")
    set(GTest_DIR ${packages} CACHE PATH "" FORCE)
endif()
