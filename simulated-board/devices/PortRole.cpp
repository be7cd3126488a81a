#include "simulated-board/devices/PortRole.h"

#include "simulated-board/devices/Controller.h"
#include "simulated-board/devices/FlashingLog.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace
{

void WriteAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "write");
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
}

class Loopback : public PortRole
{
public:
    void Run(int master) override
    {
        for (;;) {
            WriteAll(master, ReadSome(master));
        }
    }
};

class Echo : public PortRole
{
public:
    void Run(int master) override
    {
        std::string pending;
        for (;;) {
            pending += ReadSome(master);
            for (auto end = pending.find('\n'); end != std::string::npos;
                 end = pending.find('\n')) {
                WriteAll(master, "echo: " + pending.substr(0, end + 1));
                pending.erase(0, end + 1);
            }
        }
    }
};

class Nothing : public PortRole
{
public:
    void Run(int master) override
    {
        for (;;) {
            ReadSome(master);
        }
    }
};

/// Sends without end and never reads.
class Flood : public PortRole
{
public:
    void Run(int master) override
    {
        std::string text;
        while (text.size() < 4096) {
            text += "0123456789 abcdefghijklmnopqrstuvwxyz ";
        }
        for (;;) {
            WriteAll(master, text);
        }
    }
};

class Vanishing : public PortRole
{
public:
    void Run(int master) override { WriteAll(master, ReadSome(master)); }
};

/// Prints the log of a board that is put on the bench when the port has been opened and cleared,
/// and of another board after a silence. It waits for a slow reader, so that a busy machine loses
/// nothing.
class Log : public PortRole
{
public:
    explicit Log(const FlashingRun& run) : m_log(FlashingLog(run)) {}

    void Run(int master) override
    {
        // In packet mode the terminal reports to this end when the other end clears the port.
        const int on = 1;
        Check(ioctl(master, TIOCPKT, &on), "packet mode");
        Check(fcntl(master, F_SETFL, O_NONBLOCK), "non-blocking mode");
        const std::size_t chunk = 115;
        while (!IsCleared(master, -1)) {
        }
        for (std::size_t at = 0;;) {
            const std::string part = m_log.substr(at, chunk);
            const ssize_t written = write(master, part.data(), part.size());
            Check(written, "write");
            at += written > 0 ? static_cast<std::size_t>(written) : 0;
            const bool isOver = at >= m_log.size();
            if (IsCleared(master, isOver ? 5000 : 10) || isOver) {
                at = 0;
            }
        }
    }

private:
    /// Whether the port is cleared within that time. Bytes that the board writes are discarded.
    static bool IsCleared(int master, int milliseconds)
    {
        pollfd port = {master, POLLIN, 0};
        if (poll(&port, 1, milliseconds) <= 0) {
            return false;
        }
        const std::string packet = ReadSome(master);
        return (packet.at(0) & TIOCPKT_FLUSHREAD) != 0;
    }

    static void Check(ssize_t result, const char* what)
    {
        if (result < 0 && errno != EAGAIN) {
            throw std::system_error(errno, std::generic_category(), what);
        }
    }

    std::string m_log;
};

FlashingRun RunOf(const std::vector<std::string>& arguments)
{
    FlashingRun run;
    if (arguments.empty() || arguments[0] == "good") {
        return run;
    }
    if (arguments[0] == "no-uboot") {
        run.outcome = FlashingRun::Outcome::NoUboot;
    } else if (arguments[0] == "stuck") {
        run.outcome = FlashingRun::Outcome::Stuck;
    } else if (arguments[0] == "bad") {
        run.selfTestPasses = false;
    } else {
        throw std::invalid_argument("no such log");
    }
    return run;
}

class Modem : public PortRole
{
public:
    void Run(int master) override
    {
        for (;;) {
            const std::string bytes = ReadSome(master);
            FILE* received = std::fopen("/run/board/received/modem", "ab");
            if (received == nullptr) {
                throw std::system_error(errno, std::generic_category(), "received/modem");
            }
            std::fwrite(bytes.data(), 1, bytes.size(), received);
            std::fclose(received);
        }
    }
};

} // namespace

std::string ReadSome(int descriptor)
{
    char buffer[4096];
    ssize_t count = 0;
    do {
        count = read(descriptor, buffer, sizeof buffer);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        throw std::system_error(errno, std::generic_category(), "read");
    }
    return {buffer, static_cast<std::size_t>(count)};
}

std::unique_ptr<PortRole> MakePortRole(const std::string& name,
                                       const std::vector<std::string>& arguments)
{
    if (name == "loopback") {
        return std::make_unique<Loopback>();
    }
    if (name == "echo") {
        return std::make_unique<Echo>();
    }
    if (name == "nothing") {
        return std::make_unique<Nothing>();
    }
    if (name == "flood") {
        return std::make_unique<Flood>();
    }
    if (name == "vanishing") {
        return std::make_unique<Vanishing>();
    }
    if (name == "log") {
        return std::make_unique<Log>(RunOf(arguments));
    }
    if (name == "modem") {
        return std::make_unique<Modem>();
    }
    if (name == "controller") {
        return std::make_unique<Controller>();
    }
    throw std::invalid_argument("no such role");
}
