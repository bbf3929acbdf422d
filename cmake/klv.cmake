# The helpers of the build: compile options, rooms (one static library for each directory), the shared
# library made of all of them, and the executables of tests, benchmarks and fuzzing.

add_library(klv_options INTERFACE)
target_compile_features(klv_options INTERFACE cxx_std_20)
target_include_directories(klv_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(klv_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    -Wno-sign-conversion -fno-semantic-interposition)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 reports false positives through inlined containers.
    target_compile_options(klv_options INTERFACE -Wno-array-bounds -Wno-stringop-overflow
        -Wno-maybe-uninitialized -Wno-restrict -Wno-use-after-free)
endif()
if(KLV_WERROR)
    target_compile_options(klv_options INTERFACE -Werror)
endif()
if(KLV_SANITIZE)
    # Unsigned arithmetic wraps by design (see docs/architecture.md); everything else is reported and fatal.
    target_compile_options(klv_options INTERFACE -fsanitize=${KLV_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        target_compile_options(klv_options INTERFACE -fno-sanitize=unsigned-integer-overflow,unsigned-shift-base
            -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitize-ignore.txt)
    endif()
    target_link_options(klv_options INTERFACE -fsanitize=${KLV_SANITIZE})
endif()

set(KLV_ROOMS "" CACHE INTERNAL "")

# klv_room(NAME): the static library klv_NAME of everything in klv/NAME and its subfolders.
function(klv_room name)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/klv/${name}/*.cpp)
    add_library(klv_${name} STATIC ${sources})
    target_link_libraries(klv_${name} PUBLIC klv_options)
    set_target_properties(klv_${name} PROPERTIES LINKER_LANGUAGE CXX)
    set(KLV_ROOMS ${KLV_ROOMS} klv_${name} CACHE INTERNAL "")
endfunction()

# The shared library that applications load, module name KLV006: every object of every room. A target needs
# sources, so the objects of one room are named as such.
function(klv_shared_library)
    add_library(KLV006 SHARED $<TARGET_OBJECTS:klv_core>)
    add_library(KLV006::KLV006 ALIAS KLV006)
    set(others ${KLV_ROOMS})
    list(REMOVE_ITEM others klv_core)
    target_link_libraries(KLV006 PUBLIC klv_options PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,${others}>"
        PkgConfig::FREETYPE PkgConfig::FONTCONFIG PkgConfig::PIXMAN ${CMAKE_DL_LIBS})
    target_link_options(KLV006 PRIVATE -Wl,-Bsymbolic)
    set_target_properties(KLV006 PROPERTIES LINKER_LANGUAGE CXX LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
endfunction()

# Links a program with the rooms themselves, so that tests reach what the library does not export.
function(klv_link_rooms target)
    target_link_libraries(${target} PRIVATE klv_options "$<LINK_GROUP:RESCAN,${KLV_ROOMS}>"
        PkgConfig::FREETYPE PkgConfig::FONTCONFIG PkgConfig::PIXMAN ${CMAKE_DL_LIBS})
endfunction()
