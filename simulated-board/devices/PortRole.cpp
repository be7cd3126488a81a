#include "simulated-board/devices/PortRole.h"

#include "simulated-board/devices/Controller.h"
#include "simulated-board/devices/FlashingLog.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>

#include <poll.h>
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

/// Talks without end and never listens.
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

/// Prints the log of board after board at the speed of the line, with a silence after each.
class Log : public PortRole
{
public:
    explicit Log(const FlashingRun& run) : m_log(FlashingLog(run)) {}

    void Run(int master) override
    {
        const std::size_t chunk = 115;
        for (;;) {
            for (std::size_t at = 0; at < m_log.size(); at += chunk) {
                WriteAll(master, std::string_view(m_log).substr(at, chunk));
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            std::this_thread::sleep_for(std::chrono::seconds(5));
        }
    }

private:
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
