# The assets of the report, embedded: writes report_assets.cpp, which defines one array for each of
# the files. Needs nothing but CMake. Run as a script by the build:
#   cmake -DOUTPUT=FILE.cpp -DFOLDER=host/report -P assets.cmake
set(ASSETS
  Page assets/page.html
  Style assets/report.css
  Script assets/report.js
  ChartStyle third_party/uplot/uPlot.min.css
  ChartScript third_party/uplot/uPlot.iife.min.js
  ChartLicence third_party/uplot/LICENSE)

if(NOT CMAKE_SCRIPT_MODE_FILE)
  # Included by host/CMakeLists.txt: the rule that makes the source, in REPORT_ASSETS_SOURCE.
  set(REPORT_ASSETS_SOURCE ${CMAKE_CURRENT_BINARY_DIR}/report_assets.cpp)
  set(REPORT_ASSET_FILES ${ASSETS})
  list(FILTER REPORT_ASSET_FILES INCLUDE REGEX "/")
  list(TRANSFORM REPORT_ASSET_FILES PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
  add_custom_command(OUTPUT ${REPORT_ASSETS_SOURCE}
    COMMAND ${CMAKE_COMMAND} -DOUTPUT=${REPORT_ASSETS_SOURCE} -DFOLDER=${CMAKE_CURRENT_LIST_DIR}
            -P ${CMAKE_CURRENT_LIST_FILE}
    DEPENDS ${REPORT_ASSET_FILES} ${CMAKE_CURRENT_LIST_FILE}
    COMMENT "Embedding the assets of the report" VERBATIM)
  return()
endif()

set(SOURCE "// Made by host/report/assets.cmake.\n#include \"report/assets.h\"\n\n")
string(APPEND SOURCE "namespace vornel::report {\nnamespace {\n")
set(FUNCTIONS "")
while(ASSETS)
  list(POP_FRONT ASSETS NAME FILE)
  file(READ ${FOLDER}/${FILE} BYTES HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," BYTES "${BYTES}")
  # Some bytes a line, so that the file can be looked at.
  string(REGEX REPLACE "('[^,]*,'[^,]*,'[^,]*,'[^,]*,'[^,]*,'[^,]*,'[^,]*,'[^,]*,)" "\\1\n" BYTES
                       "${BYTES}")
  string(APPEND SOURCE "constexpr char k${NAME}[] = {\n${BYTES}};\n")
  string(APPEND FUNCTIONS
    "std::string_view ${NAME}Asset() {\n    return {k${NAME}, sizeof k${NAME}};\n}\n")
endwhile()
file(WRITE ${OUTPUT} "${SOURCE}}  // namespace\n\n${FUNCTIONS}}  // namespace vornel::report\n")
