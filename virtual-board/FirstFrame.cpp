// Starts a program and prints how many milliseconds it takes until it has painted a place of the
// display. The program runs on.
//
//   first-frame X Y PROGRAM [ARGUMENT]...

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <linux/fb.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{

const std::uint32_t unusual = 0x00ff00ff;
const int limitMs = 60000;

using Clock = std::chrono::steady_clock;

long long MsSince(Clock::time_point begin)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

/// Fills the display with a colour that no program paints, and returns the pixel at the place.
/// Null when there is no display with four bytes for each pixel.
const volatile std::uint32_t* FillDisplay(unsigned x, unsigned y)
{
    const int device = open("/dev/fb0", O_RDWR | O_CLOEXEC);
    fb_fix_screeninfo fixed = {};
    fb_var_screeninfo variable = {};
    if (ioctl(device, FBIOGET_FSCREENINFO, &fixed) != 0 ||
        ioctl(device, FBIOGET_VSCREENINFO, &variable) != 0 || variable.bits_per_pixel != 32 ||
        x >= variable.xres || y >= variable.yres) {
        return nullptr;
    }
    const unsigned width = fixed.line_length / 4;
    void* memory = mmap(nullptr, fixed.line_length * variable.yres, PROT_READ | PROT_WRITE,
                        MAP_SHARED, device, 0);
    if (memory == MAP_FAILED) {
        return nullptr;
    }
    auto* pixels = static_cast<std::uint32_t*>(memory);
    for (unsigned i = 0; i < width * variable.yres; ++i) {
        pixels[i] = unusual;
    }
    return pixels + y * width + x;
}

} // namespace

int main(int argc, char** argv)
{
    const volatile std::uint32_t* pixel =
        argc > 3 ? FillDisplay(std::atoi(argv[1]), std::atoi(argv[2])) : nullptr;
    if (pixel == nullptr) {
        std::fprintf(stderr, "Usage: first-frame X Y PROGRAM [ARGUMENT]..., on a display\n");
        return 2;
    }
    const Clock::time_point begin = Clock::now();
    if (fork() == 0) {
        execvp(argv[3], argv + 3);
        _exit(127);
    }
    // Black is what a program may clear the display with before it paints.
    while ((*pixel & 0xffffff) == unusual || (*pixel & 0xffffff) == 0) {
        if (MsSince(begin) > limitMs) {
            std::fprintf(stderr, "first-frame: nothing was painted\n");
            return 1;
        }
        usleep(1000);
    }
    std::printf("%lld\n", MsSince(begin));
    return 0;
}
