# Warnings for every target of the project, errors where CI asks for them.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                    -Wold-style-cast -Wcast-align -Wunused -Woverloaded-virtual
                    -Wnull-dereference -Wformat=2)
if(ZELNO_WERROR)
  add_compile_options(-Werror)
endif()
