#include "simulated-board/devices/PseudoTerminalPair.h"

#include <cerrno>
#include <system_error>

#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace
{

void Check(int result, const char* what)
{
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

} // namespace

PseudoTerminalPair::PseudoTerminalPair()
{
    char name[64] = {};
    termios raw = {};
    cfmakeraw(&raw);
    raw.c_cflag |= CREAD | CLOCAL;
    Check(openpty(&m_master, &m_slave, name, &raw, nullptr), "openpty");
    m_slaveName = name;
}

PseudoTerminalPair::~PseudoTerminalPair()
{
    Close();
}

void PseudoTerminalPair::LinkAs(const std::string& device) const
{
    unlink(device.c_str());
    Check(symlink(m_slaveName.c_str(), device.c_str()), device.c_str());
}

void PseudoTerminalPair::Close()
{
    for (int* end : {&m_slave, &m_master}) {
        if (*end >= 0) {
            close(*end);
            *end = -1;
        }
    }
}
