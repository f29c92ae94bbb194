# The artwork is compiled into the program: the file resources/<id>-<name>.png is the picture <id>, and
# <id>-<name>@2x.png the same with two pixels for each of its pixels.
# The assembler takes the files in as they are; a generated table finds them by their ids.
file(GLOB ARTWORK CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/[0-9]*-*.png)

set(ARTWORK_DATA "")
set(ARTWORK_SYMBOLS "")
set(ARTWORK_TABLE "")
foreach(FILE IN LISTS ARTWORK)
  get_filename_component(NAME ${FILE} NAME)
  string(REGEX MATCH "^[0-9]+" ID ${NAME})
  set(SCALE 1)
  if(NAME MATCHES "@([0-9])x")
    set(SCALE ${CMAKE_MATCH_1})
  endif()
  set(SYMBOL kqu_picture_${ID}_${SCALE})
  string(APPEND ARTWORK_DATA
    "    \"${SYMBOL}:\\n.incbin \\\"${FILE}\\\"\\n\"\n"
    "    \"${SYMBOL}_end:\\n\"\n")
  string(APPEND ARTWORK_SYMBOLS
    "extern const std::byte ${SYMBOL}[], ${SYMBOL}_end[];\n")
  string(APPEND ARTWORK_TABLE
    "    {{${ID}, ${SCALE}}, {${SYMBOL}, ${SYMBOL}_end}},\n")
endforeach()
configure_file(${CMAKE_SOURCE_DIR}/cmake/EmbeddedPictures.cpp.in
               ${CMAKE_BINARY_DIR}/generated/EmbeddedPictures.cpp @ONLY)

add_library(kqu_resources STATIC ${CMAKE_BINARY_DIR}/generated/EmbeddedPictures.cpp)
set_source_files_properties(${CMAKE_BINARY_DIR}/generated/EmbeddedPictures.cpp
                            PROPERTIES OBJECT_DEPENDS "${ARTWORK}")
target_link_libraries(kqu_resources PRIVATE kqu_options)
