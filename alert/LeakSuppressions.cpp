// The toolkit and the libraries below it keep caches of fonts, themes and displays until the
// process ends, and LeakSanitizer counts those that they reach in ways that it cannot follow.
// Leaks of this program's own code are still reported.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libgtk-4\nleak:libfontconfig\nleak:libpango\nleak:libcairo\nleak:libgobject-2.0\n";
}

// The error output is the starter's to read: no table of what was suppressed stands in it.
extern "C" const char* __lsan_default_options() {
  return "print_suppressions=0";
}
