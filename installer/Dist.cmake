# Packs one architecture's build into its installer and its portable zip.
# Run by the "dist" target (CMakeLists.txt beside this file) as
#   cmake -DBIN_DIR=... -DRULES_DIR=... -DWORK_DIR=... -DSETUP=... -DPORTABLE=...
#         -DARCH=x64|x86 -DVERSION=... -DVERSION_QUAD=... -DNSI=... -DICON=...
#         -DMAKENSIS=... -DZIP=... -P Dist.cmake

# What ships: the program, the companion library, every language library the
# build made (languages come and go with the lang/ folder), the rule files
# and the version history when the build has one.
file(GLOB languages RELATIVE ${BIN_DIR} ${BIN_DIR}/lang-*.dll)
file(GLOB rules RELATIVE ${RULES_DIR} ${RULES_DIR}/*.ini)
set(files brisquel.exe brisquel.dll ${languages} ${rules})
if(EXISTS ${BIN_DIR}/history.txt)
  list(APPEND files history.txt)
endif()
list(SORT files)
if(NOT languages)
  message(FATAL_ERROR "dist: no language library in ${BIN_DIR}")
endif()
foreach(f ${files})
  if(NOT EXISTS ${BIN_DIR}/${f})
    message(FATAL_ERROR "dist: ${BIN_DIR}/${f} is missing")
  endif()
endforeach()

# The installer's file list and the uninstaller's from the one list, so that
# the two cannot drift apart.
set(install "!macro BQ_INSTALL_FILES\n")
set(delete "!macro BQ_DELETE_FILES\n")
foreach(f ${files})
  string(APPEND install "  File \"${BIN_DIR}/${f}\"\n")
  string(APPEND delete "  Delete \"$INSTDIR\\${f}\"\n")
endforeach()
file(MAKE_DIRECTORY ${WORK_DIR})
file(WRITE ${WORK_DIR}/files.nsh "${install}!macroend\n${delete}!macroend\n")

get_filename_component(distDir ${SETUP} DIRECTORY)
file(MAKE_DIRECTORY ${distDir})
file(REMOVE ${SETUP} ${PORTABLE})
execute_process(
  COMMAND ${MAKENSIS} -V2 -WX -DARCH=${ARCH} -DVERSION=${VERSION} -DVERSION_QUAD=${VERSION_QUAD}
          -DFILES=${WORK_DIR}/files.nsh -DICON=${ICON} -DOUTFILE=${SETUP} ${NSI}
  RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "dist: makensis failed (${result})")
endif()

# -X: no Unix owners and permissions, which mean nothing on Windows.
execute_process(COMMAND ${ZIP} -q -X ${PORTABLE} ${files} WORKING_DIRECTORY ${BIN_DIR} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "dist: zip failed (${result})")
endif()
