# Compiler settings shared by every target: link velmar_options and nothing else.
add_library(velmar_options INTERFACE)
target_compile_features(velmar_options INTERFACE cxx_std_20)
target_compile_definitions(velmar_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CONTEXTLESS_CONNECT
    QT_NO_KEYWORDS
    QT_DISABLE_DEPRECATED_UP_TO=0x060400)
target_compile_options(velmar_options INTERFACE -Wall -Wextra -Wpedantic)

option(VELMAR_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(VELMAR_SANITIZE)
    target_compile_options(velmar_options INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(velmar_options INTERFACE -fsanitize=address,undefined)
endif()

# As Debian builds its packages: relocations read-only and resolved at start.
target_link_options(velmar_options INTERFACE "LINKER:-z,relro" "LINKER:-z,now")

option(VELMAR_WERROR "Treat warnings as errors" OFF)
if(VELMAR_WERROR)
    target_compile_options(velmar_options INTERFACE -Werror)
endif()


# Every executable carries its product version in an ELF package-metadata note
# (".note.package"), where GetProductVersion and the About box read it.
include(CheckLinkerFlag)
check_linker_flag(CXX "LINKER:--package-metadata={}" VELMAR_LINKER_PACKAGE_METADATA)
# Passed with -Xlinker: -Wl would split the JSON at its commas.
if(VELMAR_LINKER_PACKAGE_METADATA)
    set(VELMAR_PACKAGE_METADATA
        "{\"type\":\"velmar\",\"name\":\"$<TARGET_PROPERTY:NAME>\",\"version\":\"${PROJECT_VERSION}\"}")
    target_link_options(velmar_options INTERFACE
        "$<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-Xlinker;--package-metadata=${VELMAR_PACKAGE_METADATA}>")
endif()

# libFuzzer builds (clang): every library gets the fuzzer's coverage hooks and
# the sanitizers, so the fuzzers see into the parsers; the entry points are in
# fuzz/.
option(VELMAR_FUZZ "Build the libFuzzer entries in fuzz/ (needs clang)" OFF)
if(VELMAR_FUZZ)
    target_compile_options(velmar_options INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
    target_link_options(velmar_options INTERFACE -fsanitize=address,undefined)
endif()
