// Has one fault, by its argument. The sanitizers must name it, as they would in a test; clang-tidy
// need not.
#include <climits>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv)
{
    const char* const fault = argc > 1 ? argv[1] : "";
    // The compiler must not know what is wrong here.
    int* volatile number = static_cast<int*>(std::malloc(sizeof(int)));
    *number = INT_MAX;
    if (std::strcmp(fault, "leak") == 0) {
        number = nullptr;
        return 0; // NOLINT(clang-analyzer-unix.Malloc)
    }
    if (std::strcmp(fault, "overflow") == 0) {
        *number += argc;
    }
    std::free(number);
    // NOLINTNEXTLINE(clang-analyzer-unix.Malloc)
    return std::strcmp(fault, "freed") == 0 ? *number : 0;
}
