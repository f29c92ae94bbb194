# The artwork is compiled into the program: one object per picture, found by its id.
add_library(kqu_resources INTERFACE)
