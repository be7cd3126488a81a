#include "simulated-board/devices/Controller.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <numeric>
#include <string_view>
#include <system_error>

#include <poll.h>
#include <unistd.h>

namespace
{

// A frame is header, length, command, data and checksum. The length counts the bytes after it.
constexpr std::string_view header = "\x5A\xA5";
const std::size_t lengthEnd = 3;
const std::size_t dataBegin = 4;
const char setTime = 2;
const char switchBuzzer = 3;

/// An incomplete frame is dropped after this time, in ms.
const int frameTimeout = 200;

int Byte(const std::string& bytes, std::size_t index)
{
    return static_cast<unsigned char>(bytes[index]);
}

/// Whether the bytes can be the beginning of a frame.
bool MayBeginAFrame(const std::string& bytes)
{
    const auto count = std::min(bytes.size(), header.size());
    return bytes.compare(0, count, header, 0, count) == 0;
}

/// The checksum is the sum of the bytes from the length to the last byte before it.
bool ChecksumIsRight(const std::string& frame)
{
    const int sum = std::accumulate(frame.begin() + header.size(), frame.end() - 1, 0,
                                    [](int total, char c) { return total + (c & 0xFF); });
    return (sum & 0xFF) == Byte(frame, frame.size() - 1);
}

} // namespace

void Controller::Run(int master)
{
    WriteState();
    for (;;) {
        pollfd port = {master, POLLIN, 0};
        if (poll(&port, 1, m_pending.empty() ? -1 : frameTimeout) == 0) {
            Refuse(std::min(m_pending.size(), header.size()));
        } else {
            m_pending += ReadSome(master);
        }
        while (!m_pending.empty() && TakeFrame()) {
        }
    }
}

bool Controller::TakeFrame()
{
    if (!MayBeginAFrame(m_pending)) {
        const auto next = m_pending.find(header[0], 1);
        Refuse(std::min(next, m_pending.size()));
        return true;
    }
    if (m_pending.size() < lengthEnd) {
        return false;
    }
    const std::size_t size = lengthEnd + Byte(m_pending, lengthEnd - 1);
    if (m_pending.size() < size) {
        return false;
    }
    if (!Accept(m_pending.substr(0, size))) {
        Refuse(header.size());
        return true;
    }
    m_pending.erase(0, size);
    ++m_accepted;
    WriteState();
    return true;
}

/// Carries out a frame. False when the bytes are not a valid frame.
bool Controller::Accept(const std::string& frame)
{
    if (frame.size() <= dataBegin || !ChecksumIsRight(frame)) {
        return false;
    }
    const std::string data = frame.substr(dataBegin, frame.size() - dataBegin - 1);
    switch (frame[lengthEnd]) {
    case switchBuzzer:
        return SwitchBuzzer(data);
    case setTime:
        return SetTime(data);
    default:
        return false;
    }
}

bool Controller::SwitchBuzzer(const std::string& data)
{
    if (data != "\xFF" && data != std::string(1, '\0')) {
        return false;
    }
    m_buzzer = data == "\xFF";
    return true;
}

bool Controller::SetTime(const std::string& data)
{
    if (data.size() != 6) {
        return false;
    }
    const int month = Byte(data, 1);
    const int day = Byte(data, 2);
    const int hour = Byte(data, 3);
    const int minute = Byte(data, 4);
    const int second = Byte(data, 5);
    if (month > 11 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 59) {
        return false;
    }
    char text[80];
    // Months count from 0 in a frame.
    std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d", 2000 + Byte(data, 0), month + 1,
                  day, hour, minute, second);
    m_time = text;
    return true;
}

void Controller::Refuse(std::size_t count)
{
    m_pending.erase(0, count);
    ++m_refused;
    WriteState();
}

/// Renamed into place, so that a reader always finds a complete file.
void Controller::WriteState() const
{
    const char* const path = "/run/board/received/controller";
    const std::string draft = std::string(path) + ".new";
    FILE* file = std::fopen(draft.c_str(), "w");
    if (file == nullptr) {
        throw std::system_error(errno, std::generic_category(), draft);
    }
    std::fprintf(file, "buzzer %s\ntime %s\naccepted %d\nrefused %d\n", m_buzzer ? "on" : "off",
                 m_time.c_str(), m_accepted, m_refused);
    std::fclose(file);
    std::rename(draft.c_str(), path);
}
