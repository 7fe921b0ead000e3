# One library per folder, compiled once for each instruction-set level. The levels never meet in one
# program: the dynamic linker picks a whole library (see hosts/CMakeLists.txt).

option(CIF_SANITIZE "Address and undefined-behaviour sanitizers" OFF)

set(CIF_DEFAULT_LEVELS baseline)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64" AND NOT CIF_SANITIZE)
    list(APPEND CIF_DEFAULT_LEVELS v3)
endif()
set(CIF_LEVELS "${CIF_DEFAULT_LEVELS}" CACHE STRING "Instruction-set levels to build: baseline;v3")

add_library(cif-options INTERFACE)
target_include_directories(cif-options INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/include)
# Contraction off: both levels must give the same bytes, and generators are reproducible to the byte.
# Straight-line vectorisation off: g++ 12 takes doubles that are rounded to single precision and widened
# again side by side (two of them are enough) for a plain copy.
target_compile_options(cif-options INTERFACE
    -ffp-contract=off -fno-math-errno -fno-tree-slp-vectorize -fno-semantic-interposition
    -Wall -Wextra -Wno-psabi)
if(CIF_SANITIZE)
    # A null pointer ends the program in any case, and so does a load of lanes that is not aligned; checking
    # for them took a third of the compiler's time.
    target_compile_options(cif-options INTERFACE
        -fsanitize=address,undefined,float-cast-overflow -fno-sanitize=null,alignment
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(cif-options INTERFACE -fsanitize=address,undefined)
endif()

# cif_library(NAME name SOURCES file… [LINKS folder-library…] [EXTERNAL target-or-flag…])
function(cif_library)
    cmake_parse_arguments(LIB "" "NAME" "SOURCES;LINKS;EXTERNAL" ${ARGN})
    foreach(level IN LISTS CIF_LEVELS)
        set(target ${LIB_NAME}-${level})
        add_library(${target} OBJECT ${LIB_SOURCES})
        target_link_libraries(${target} PUBLIC cif-options ${LIB_EXTERNAL})
        if(level STREQUAL "v3")
            target_compile_options(${target} PRIVATE -march=x86-64-v3)
        endif()
        foreach(below IN LISTS LIB_LINKS)
            target_link_libraries(${target} PUBLIC ${below}-${level})
        endforeach()
    endforeach()
    set_property(GLOBAL APPEND PROPERTY CIF_FOLDER_LIBRARIES ${LIB_NAME})
endfunction()
