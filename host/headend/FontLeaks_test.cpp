// The font library keeps its tables until the program ends and frees them nowhere; the leak checker of the sanitizer
// preset is told so. Nothing else is let off.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}
