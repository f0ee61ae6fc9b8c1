// Third-party libraries only, each with its reason; never our own code.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is ThreadSanitizer's
extern "C" const char* __tsan_default_suppressions() {
  // The sandbox's HTTP library is not instrumented, so nobody sees how it guards the statics it makes on
  // first use.
  return "called_from_lib:libcpp-httplib.so\n";
}
