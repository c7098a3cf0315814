# A toolchain for checks of the sources. It compiles for macOS on Linux, with clang and against our own declarations.
# The output must not be run or shipped, because its headers of the C library are those of musl.
#   cmake --toolchain tests/platform/macos/darwin.cmake -DKOVRA_PLATFORM=macos -DKOVRA_CHECKED_ARCHITECTURE=arm64
# The other architecture is x86_64.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 22)  # macOS 13

set(KOVRA_CHECKED_ARCHITECTURE arm64 CACHE STRING "The processor to compile for: arm64 or x86_64")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KOVRA_CHECKED_ARCHITECTURE)
set(CMAKE_SYSTEM_PROCESSOR "${KOVRA_CHECKED_ARCHITECTURE}")

find_program(KOVRA_CLANG clang++ REQUIRED)
get_filename_component(llvm "${KOVRA_CLANG}" REALPATH)
get_filename_component(llvm "${llvm}/../.." ABSOLUTE)
find_program(KOVRA_INSTALL_NAME_TOOL llvm-install-name-tool PATHS "${llvm}/bin" NO_DEFAULT_PATH REQUIRED)
file(GLOB clang_headers "${llvm}/lib/clang/*/include")
find_path(KOVRA_MUSL_HEADERS features.h
  PATHS /usr/include/x86_64-linux-musl /usr/include/aarch64-linux-musl NO_DEFAULT_PATH REQUIRED)

# musl's types differ from Darwin's where both have 64 bits, and in some sizes. So its list of types is copied, with those
# of Darwin. Those of time and the greatest integers have the type long there, too.
set(types "${CMAKE_BINARY_DIR}/darwin_types")
file(READ "${KOVRA_MUSL_HEADERS}/bits/alltypes.h" alltypes)
string(REPLACE "#define _Int64 long" "#define _Int64 long long" alltypes "${alltypes}")
foreach(type IN ITEMS "long time_t" "int suseconds_t" "long intmax_t" "unsigned long uintmax_t" "unsigned short mode_t"
    "unsigned short nlink_t" "int dev_t")
  string(REGEX REPLACE "^.* " "" name "${type}")
  string(REGEX REPLACE "typedef [^;]* ${name};" "typedef ${type};" alltypes "${alltypes}")
endforeach()
file(WRITE "${types}/bits/alltypes.h" "${alltypes}")

set(CMAKE_OSX_SYSROOT "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_INSTALL_NAME_TOOL "${KOVRA_INSTALL_NAME_TOOL}")
set(ours "${CMAKE_CURRENT_LIST_DIR}/declarations")
set(flags "-nostdinc -isystem ${llvm}/include/c++/v1 -isystem ${clang_headers} -isystem ${ours}")
string(APPEND flags " -isystem ${ours}/darwin -isystem ${types} -isystem ${KOVRA_MUSL_HEADERS} -D_GNU_SOURCE -fblocks")
# Otherwise libc++ 19 includes <xlocale.h>, which only the C libraries of the BSDs and of macOS have.
string(APPEND flags " -D_LIBCPP_HAS_MUSL_LIBC")
foreach(language IN ITEMS CXX OBJCXX)
  set(CMAKE_${language}_COMPILER "${KOVRA_CLANG}")
  set(CMAKE_${language}_COMPILER_TARGET "${KOVRA_CHECKED_ARCHITECTURE}-apple-macos13")
  set(CMAKE_${language}_FLAGS_INIT "${flags} -stdlib=libc++")
endforeach()

set(KOVRA_EXPORTS "" CACHE PATH "The folder with the libraries to link against")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KOVRA_EXPORTS)
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -Wno-unused-command-line-argument -Wl,-syslibroot,${KOVRA_EXPORTS}")
