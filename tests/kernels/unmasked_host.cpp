// SPDX-License-Identifier: MIT
// A host that unmasks every floating-point exception, and loads the library: nothing may be raised,
// or it dies. A second time with all of them masked: nothing may be left in the flags either.
//   unmasked_host LIBRARY
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cfenv>
#include <cstdio>

namespace {

// What went wrong while loading in a process of its own; null for nothing.
const char* load(const char* library) {
  void* const handle = dlopen(library, RTLD_NOW);
  if (handle == nullptr) return dlerror();
  if (std::fetestexcept(FE_ALL_EXCEPT) != 0) return "loading left flags set";
  return dlclose(handle) == 0 ? nullptr : dlerror();
}

bool survives(const char* library, int unmasked) {
  const pid_t child = fork();
  if (child == 0) {
    std::feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(unmasked);
    const char* fault = load(library);
    if (fault == nullptr && fegetexcept() != unmasked) fault = "loading changed the masks";
    if (fault != nullptr) std::fprintf(stderr, "%s\n", fault);
    _exit(fault == nullptr ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  if (status != 0) std::fprintf(stderr, "unmasked %d: status %d\n", unmasked, status);
  return status == 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  const bool masked = survives(arguments[1], 0), unmasked = survives(arguments[1], FE_ALL_EXCEPT);
  return masked && unmasked ? 0 : 1;
}
