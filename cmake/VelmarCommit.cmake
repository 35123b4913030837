# Run at every build (cmake -P): writes OUT, a header naming the commit the
# sources are at, only when that changed, so an unchanged tree rebuilds
# nothing. A tree without git (a source tarball) says "unknown".
execute_process(COMMAND git -C "${SOURCE_DIR}" rev-parse --short=12 HEAD
    OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE status)
if(NOT status EQUAL 0 OR commit STREQUAL "")
    set(commit "unknown")
else()
    execute_process(COMMAND git -C "${SOURCE_DIR}" status --porcelain --untracked-files=no
        OUTPUT_VARIABLE changes OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(NOT changes STREQUAL "")
        string(APPEND commit "-modified")
    endif()
endif()
set(text "#pragma once\n#define VELMAR_COMMIT \"${commit}\"\n")
if(EXISTS "${OUT}")
    file(READ "${OUT}" old)
endif()
if(NOT old STREQUAL text)
    file(WRITE "${OUT}" "${text}")
endif()
