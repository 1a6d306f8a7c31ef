/* LeakSanitizer calls this function, and does not report leaks in the libraries that it returns.
 * The free AppKit of GNUstep and its Objective-C runtime never release their class tables and some
 * font caches. GNUstep does not free the value of an empty X property; only GNUstep calls
 * XGetWindowProperty in these programs. GNUstep also allocates the Objective-C objects of this
 * project, so LeakSanitizer does not report them if they leak. */
/* NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c): the sanitizer's name */
const char* __lsan_default_suppressions(void);

/* NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c): the sanitizer's name */
const char* __lsan_default_suppressions(void) {
  return "leak:libobjc.so\n"
         "leak:libgnustep-base.so\n"
         "leak:libgnustep-gui.so\n"
         "leak:libgnustep-back\n"
         "leak:libfontconfig.so\n"
         "leak:XGetWindowProperty\n";
}
