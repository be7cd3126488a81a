// Makes a touch screen of QEMU's tablet, which Linux takes for a mouse. It takes the tablet for
// itself and repeats its input as /dev/input/touchscreen, a direct multi-touch device with one
// finger.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

[[noreturn]] void Fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

int OpenTablet()
{
    for (int i = 0; i < 16; ++i) {
        const std::string path = "/dev/input/event" + std::to_string(i);
        const int device = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        char name[64] = "";
        if (device >= 0 && ioctl(device, EVIOCGNAME(sizeof name), name) > 0 &&
            std::strcmp(name, "QEMU Virtio Tablet") == 0) {
            return device;
        }
        close(device);
    }
    errno = ENODEV;
    Fail("tablet");
}

/// The largest value of the tablet's axis.
int Maximum(int tablet, int axis)
{
    input_absinfo info = {};
    if (ioctl(tablet, EVIOCGABS(axis), &info) != 0 || info.maximum <= 0) {
        Fail("tablet's axis");
    }
    return info.maximum;
}

void AddAxis(int screen, int axis, int maximum)
{
    uinput_abs_setup setup = {};
    setup.code = static_cast<__u16>(axis);
    setup.absinfo.maximum = maximum;
    if (ioctl(screen, UI_SET_ABSBIT, axis) != 0 || ioctl(screen, UI_ABS_SETUP, &setup) != 0) {
        Fail("axis");
    }
}

int NewTouchScreen(int width, int height)
{
    const int screen = open("/dev/uinput", O_WRONLY | O_CLOEXEC);
    if (screen < 0) {
        Fail("/dev/uinput");
    }
    ioctl(screen, UI_SET_EVBIT, EV_KEY);
    ioctl(screen, UI_SET_KEYBIT, BTN_TOUCH);
    ioctl(screen, UI_SET_EVBIT, EV_ABS);
    ioctl(screen, UI_SET_PROPBIT, INPUT_PROP_DIRECT);
    AddAxis(screen, ABS_X, width - 1);
    AddAxis(screen, ABS_Y, height - 1);
    AddAxis(screen, ABS_MT_SLOT, 9);
    AddAxis(screen, ABS_MT_TRACKING_ID, 65535);
    AddAxis(screen, ABS_MT_POSITION_X, width - 1);
    AddAxis(screen, ABS_MT_POSITION_Y, height - 1);
    uinput_setup setup = {};
    setup.id.bustype = BUS_I2C;
    std::strcpy(setup.name, "Virtual board touch screen");
    if (ioctl(screen, UI_DEV_SETUP, &setup) != 0 || ioctl(screen, UI_DEV_CREATE) != 0) {
        Fail("touch screen");
    }
    return screen;
}

/// Links the new device to a name that does not depend on the number of input devices.
void LinkTouchScreen(int screen)
{
    char input[32] = "";
    if (ioctl(screen, UI_GET_SYSNAME(sizeof input), input) < 0) {
        Fail("touch screen's name");
    }
    DIR* directory = opendir((std::string("/sys/devices/virtual/input/") + input).c_str());
    if (directory == nullptr) {
        Fail(input);
    }
    while (const dirent* entry = readdir(directory)) {
        if (std::strncmp(entry->d_name, "event", 5) == 0) {
            unlink("/dev/input/touchscreen");
            if (symlink(entry->d_name, "/dev/input/touchscreen") != 0) {
                Fail("/dev/input/touchscreen");
            }
        }
    }
    closedir(directory);
}

void Send(int screen, int type, int code, int value)
{
    input_event event = {};
    event.type = static_cast<__u16>(type);
    event.code = static_cast<__u16>(code);
    event.value = value;
    if (write(screen, &event, sizeof event) != sizeof event) {
        Fail("touch screen");
    }
}

void SendPosition(int screen, int x, int y)
{
    Send(screen, EV_ABS, ABS_MT_POSITION_X, x);
    Send(screen, EV_ABS, ABS_MT_POSITION_Y, y);
    Send(screen, EV_ABS, ABS_X, x);
    Send(screen, EV_ABS, ABS_Y, y);
}

void Repeat(int tablet, int screen, int width, int height)
{
    const long rangeX = Maximum(tablet, ABS_X) + 1L;
    const long rangeY = Maximum(tablet, ABS_Y) + 1L;
    int x = 0;
    int y = 0;
    int touches = 0;
    bool isPressed = false;
    bool isDown = false;
    input_event event = {};
    while (read(tablet, &event, sizeof event) == sizeof event) {
        if (event.type == EV_ABS && event.code == ABS_X) {
            x = static_cast<int>(event.value * static_cast<long long>(width) / rangeX);
        } else if (event.type == EV_ABS && event.code == ABS_Y) {
            y = static_cast<int>(event.value * static_cast<long long>(height) / rangeY);
        } else if (event.type == EV_KEY && event.code == BTN_LEFT) {
            isPressed = event.value != 0;
        } else if (event.type == EV_SYN && event.code == SYN_REPORT && (isPressed || isDown)) {
            if (isPressed != isDown) {
                Send(screen, EV_ABS, ABS_MT_TRACKING_ID, isPressed ? touches++ % 65536 : -1);
                Send(screen, EV_KEY, BTN_TOUCH, isPressed ? 1 : 0);
            }
            if (isPressed && !isDown) {
                // The kernel passes on what changes. A program that has started since the last
                // touch at this place would not be told it.
                SendPosition(screen, x ^ 1, y ^ 1);
            }
            if (isPressed) {
                SendPosition(screen, x, y);
            }
            Send(screen, EV_SYN, SYN_REPORT, 0);
            isDown = isPressed;
        }
    }
    Fail("tablet");
}

} // namespace

int main(int argc, char** argv)
{
    const int width = argc == 3 ? std::atoi(argv[1]) : 0;
    const int height = argc == 3 ? std::atoi(argv[2]) : 0;
    if (width <= 0 || height <= 0) {
        std::fprintf(stderr, "Usage: touch-screen WIDTH HEIGHT\n");
        return 2;
    }
    const int tablet = OpenTablet();
    const int screen = NewTouchScreen(width, height);
    LinkTouchScreen(screen);
    if (ioctl(tablet, EVIOCGRAB, 1) != 0 || daemon(0, 1) != 0) {
        Fail("touch-screen");
    }
    Repeat(tablet, screen, width, height);
}
