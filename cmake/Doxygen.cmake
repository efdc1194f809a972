# API reference from the public headers: cmake --build build --target api-docs
# (Debian's doxygen; html in build/api-docs/html). Not part of the default build.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  set(DOXYGEN_PROJECT_NAME "libCCamRequester")
  set(DOXYGEN_PROJECT_NUMBER ${PROJECT_VERSION})
  set(DOXYGEN_PROJECT_BRIEF "Requester of network camera and recorder streams")
  set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/api-docs)
  set(DOXYGEN_GENERATE_LATEX NO)
  set(DOXYGEN_EXTRACT_ALL YES)
  set(DOXYGEN_EXTRACT_PRIVATE NO)
  set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
  set(DOXYGEN_QUIET YES)
  set(DOXYGEN_WARN_IF_UNDOCUMENTED NO)
  set(DOXYGEN_USE_MDFILE_AS_MAINPAGE ${PROJECT_SOURCE_DIR}/docs/integrating.md)
  set(DOXYGEN_PREDEFINED "CAMREQ_API=" "__attribute__(x)=")
  set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR})
  doxygen_add_docs(api-docs
    ${CAMREQ_PUBLIC_HEADERS}
    ${CAMREQ_PLATFORM_HEADER_kxcom}
    ${CAMREQ_PLATFORM_HEADER_almsnd}
    ${CAMREQ_PLATFORM_HEADER_kxhttp}
    ${PROJECT_SOURCE_DIR}/docs/integrating.md
    COMMENT "API reference in ${PROJECT_BINARY_DIR}/api-docs/html")
endif()
