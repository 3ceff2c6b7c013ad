# Link to kmr_warnings for all warnings that the code must not cause. They are errors in a build with
# tests; builds for shipping may use a compiler that warns of more.
add_library(kmr_warnings INTERFACE)
target_compile_options(kmr_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion
    $<$<BOOL:${KMR_TESTS}>:-Werror>)
