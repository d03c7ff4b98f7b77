// A system that does not know the user: a test program that compiles this file in has no home directory but that of
// the variable HOME. The program's own function stands before the system's, for the libraries that it loads too.
#include <pwd.h>

extern "C" int getpwuid_r(uid_t, passwd*, char*, size_t, passwd** result) {
    *result = nullptr;
    return 0;
}
