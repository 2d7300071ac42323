# Compiler and linker options that make the program abort on memory errors. They aren't set with sanitizers, which find the
# same errors earlier, or in Debug builds, because _FORTIFY_SOURCE needs optimization. Options in CXXFLAGS and LDFLAGS, such
# as those of dpkg-buildflags, take precedence.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
include(CheckPIESupported)

check_pie_supported(LANGUAGES CXX) # otherwise CMake compiles for PIE but leaves linking to the compiler's default

if(VITRELUX_SANITIZE)
    return()
endif()

set(optimized $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)

# Level 3 also checks sizes known only at run time, but needs a newer compiler and C library. Some distributions
# predefine a level, hence -U.
if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
    set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    check_cxx_source_compiles("#include <cstdlib>\nint main() { return 0; }" VITRELUX_HAS_FORTIFY_3)
    unset(CMAKE_REQUIRED_FLAGS)
    if(VITRELUX_HAS_FORTIFY_3)
        set(fortify 3)
    else()
        set(fortify 2)
    endif()
    add_compile_options($<${optimized}:-U_FORTIFY_SOURCE> $<${optimized}:-D_FORTIFY_SOURCE=${fortify}>)
endif()

check_cxx_compiler_flag(-fstack-protector-strong VITRELUX_HAS_STACK_PROTECTOR)
if(VITRELUX_HAS_STACK_PROTECTOR AND NOT CMAKE_CXX_FLAGS MATCHES "-f(no-)?stack-protector")
    add_compile_options($<${optimized}:-fstack-protector-strong>)
endif()

# Resolve all symbols at startup, then make the address tables read-only.
check_linker_flag(CXX "LINKER:-z,relro,-z,now" VITRELUX_HAS_FULL_RELRO)
if(VITRELUX_HAS_FULL_RELRO)
    add_link_options("$<${optimized}:LINKER:-z,relro,-z,now>")
endif()
