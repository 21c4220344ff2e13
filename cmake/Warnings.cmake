# Every target of ours is built with these; a warning fails the build.
add_library(Warnings INTERFACE)
target_compile_options(Warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
