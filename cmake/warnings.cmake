# Warnings for every target of the project, errors where CI asks for them.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wcast-align -Wunused
                    -Wnull-dereference -Wformat=2
                    # C++ only: the C of the test doubles would be told so.
                    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
                    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>
                    $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
if(ZELNO_WERROR)
  add_compile_options(-Werror)
endif()
