/* The sanitizer for leaks calls this function of the program. Its result names the libraries whose
 * leaks the sanitizer must not report. The free AppKit and its runtime never release their tables
 * of classes, and some caches of fonts. The sanitizer therefore also does not report
 * Objective-C objects that this project leaks. */
/* NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c): the sanitizer's name */
const char* __lsan_default_suppressions(void);

/* NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c): the sanitizer's name */
const char* __lsan_default_suppressions(void) {
  return "leak:libobjc.so\n"
         "leak:libgnustep-base.so\n"
         "leak:libgnustep-gui.so\n"
         "leak:libgnustep-back\n"
         "leak:libfontconfig.so\n";
}
