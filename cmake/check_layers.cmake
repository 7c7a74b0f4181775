# Fails the build when a file of one area of src/ includes a header of an area above it. The areas
# and their order: a library may use those before it, never one after it. Areas of equal rank
# (scheduling and logging; cli and ui) may not use each other either.
#   cmake -DSOURCE_DIR=<src> -DSTAMP=<file> -P check_layers.cmake
set(layers util platform model options engine scheduling logging app cli ui)
set(ranks  0    1        2     3       4      5          5       6   7   7)

foreach(layer rank IN ZIP_LISTS layers ranks)
  set(rank_${layer} ${rank})
endforeach()

set(violations "")
foreach(layer IN LISTS layers)
  file(GLOB_RECURSE files "${SOURCE_DIR}/${layer}/*.h" "${SOURCE_DIR}/${layer}/*.cpp")
  foreach(file IN LISTS files)
    file(STRINGS "${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[a-z_]+/")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^[^\"]*\"([a-z_]+)/.*$" "\\1" used "${line}")
      if(NOT DEFINED rank_${used} OR used STREQUAL layer)
        continue()
      endif()
      if(rank_${used} GREATER rank_${layer} OR rank_${used} EQUAL rank_${layer})
        file(RELATIVE_PATH shown "${SOURCE_DIR}" "${file}")
        string(STRIP "${line}" line)
        list(APPEND violations "  ${shown}: ${line}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(violations)
  list(JOIN violations "\n" text)
  message(FATAL_ERROR "Includes that run back up the layers (util, platform, model, options, engine, "
                      "scheduling and logging, app, cli and ui):\n${text}\n"
                      "Move the shared piece down, or the glue up.")
endif()
file(WRITE "${STAMP}" "layers checked\n")
