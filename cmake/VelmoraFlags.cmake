# One interface target carries the warnings, Qt defines and sanitizer flags for every target we build.
add_library(velmora_flags INTERFACE)
target_compile_options(velmora_flags INTERFACE
    -Wall -Wextra -Wold-style-cast -Wnon-virtual-dtor -Wno-missing-field-initializers)
target_compile_definitions(velmora_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_USE_QSTRINGBUILDER QT_NO_CONTEXTLESS_CONNECT
    QT_NO_FOREACH VELMORA_VERSION="${PROJECT_VERSION}")
if(VELMORA_WERROR)
    target_compile_options(velmora_flags INTERFACE -Werror)
endif()
if(VELMORA_ASAN)
    target_compile_options(velmora_flags INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer
        -fno-sanitize-recover=undefined)
    target_link_options(velmora_flags INTERFACE -fsanitize=address,undefined)
endif()
if(VELMORA_TSAN)
    target_compile_options(velmora_flags INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(velmora_flags INTERFACE -fsanitize=thread)
endif()
