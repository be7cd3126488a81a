#include "simulated-board/devices/PortRole.h"

#include "simulated-board/devices/Controller.h"
#include "simulated-board/devices/FlashingLog.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

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

/// Prints the log of the first board, which is put on the bench when the port has been opened and
/// cleared, and after a silence that of the next one. It waits for a slow reader, so that a busy
/// machine loses nothing.
class Log : public PortRole
{
public:
    explicit Log(const std::vector<FlashingRun>& runs) : m_runs(runs) {}

    void Run(int master) override
    {
        // In packet mode the terminal reports to this end when the other end clears the port.
        const int on = 1;
        Check(ioctl(master, TIOCPKT, &on), "packet mode");
        Check(fcntl(master, F_SETFL, O_NONBLOCK), "non-blocking mode");
        const std::size_t chunk = 115;
        while (!IsCleared(master, -1)) {
        }
        std::size_t board = 0;
        std::string log = FlashingLog(m_runs[board]);
        for (std::size_t at = 0;;) {
            const std::string part = log.substr(at, chunk);
            const ssize_t written = write(master, part.data(), part.size());
            Check(written, "write");
            at += written > 0 ? static_cast<std::size_t>(written) : 0;
            const bool isOver = at >= log.size();
            const bool isCleared = IsCleared(master, isOver ? 5000 : 10);
            if (isCleared || isOver) {
                at = 0;
                board = isCleared ? 0 : (board + 1) % m_runs.size();
                log = FlashingLog(m_runs[board]);
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

    std::vector<FlashingRun> m_runs;
};

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

template <typename Device>
std::unique_ptr<PortRole> New()
{
    return std::make_unique<Device>();
}

using Make = std::unique_ptr<PortRole> (*)();

/// By name; null for a log, which takes arguments.
const std::pair<const char*, Make> roles[] = {
    {"loopback", New<Loopback>},     // a plug that returns every byte
    {"echo", New<Echo>},             // answers each line with "echo: " and the line
    {"flood", New<Flood>},           // sends as fast as it is read, without line ends
    {"vanishing", New<Vanishing>},   // an adapter that returns some bytes and is then unplugged
    {"modem", New<Modem>},           // its AT port; records its input in received/modem
    {"controller", New<Controller>}, // the companion controller with the buzzer and the clock
    {"log", nullptr},                // boards that are being flashed, each in its turn
    {"nothing", New<Nothing>},       // bytes to it are lost
};

/// By name: how the flashing ends, and whether the self-test passes.
const std::pair<const char*, std::pair<FlashingRun::Outcome, bool>> logs[] = {
    {"good", {FlashingRun::Outcome::Good, true}},
    {"bad", {FlashingRun::Outcome::Good, false}},
    {"no-rootfs", {FlashingRun::Outcome::NoRootfs, true}},
    {"no-uboot", {FlashingRun::Outcome::NoUboot, true}},
    {"stuck", {FlashingRun::Outcome::Stuck, true}},
};

/// What a table has by that name. The refusal of another name ends with those that there are.
template <typename Value, std::size_t count>
const Value& Find(const std::pair<const char*, Value> (&table)[count], const std::string& name,
                  const std::string& refusal)
{
    std::string names;
    for (const auto& [known, value] : table) {
        if (known == name) {
            return value;
        }
        names += (names.empty() ? "" : ", ") + std::string(known);
    }
    throw std::invalid_argument('"' + name + "\" is " + refusal + names);
}

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
    const Make make = Find(roles, name, "no role: it takes one of ");
    std::vector<FlashingRun> runs;
    for (const std::string& argument : arguments) {
        FlashingRun run;
        std::tie(run.outcome, run.selfTestPasses) = Find(logs, argument, "unknown: a log takes ");
        runs.push_back(run);
    }
    if (make == nullptr) {
        return std::make_unique<Log>(runs.empty() ? std::vector<FlashingRun>(1) : runs);
    }
    if (!arguments.empty()) {
        throw std::invalid_argument('"' + arguments[0] + "\" is unknown: only a log takes any");
    }
    return make();
}
