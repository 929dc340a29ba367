# Writes OUTPUT: the demo's description (DEMO) and a hash over it and all SOURCES, so that a demo made by other sources is
# made anew.
file(READ ${DEMO} json)
set(all "")
foreach(source ${DEMO} ${SOURCES})
    file(SHA256 ${source} hash)
    string(APPEND all ${hash})
endforeach()
string(SHA256 hash "${all}")
file(WRITE ${OUTPUT} "namespace headend {
extern const char* const kDemoJson;
extern const char* const kSourceHash;
const char* const kDemoJson = R\"DEMO(${json})DEMO\";
const char* const kSourceHash = \"${hash}\";
} // namespace headend
")
