// The board's sound player. It checks the WAV file as the real one does, and runs for as long as
// the sound lasts. The process is named tinyplay, because the board's killall finds it by that
// name.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <time.h>

namespace
{

struct Sound {
    std::uint16_t channels = 0;
    std::uint32_t rate = 0;
    std::uint16_t bits = 0;
    std::uint32_t bytes = 0;

    double Seconds() const { return 8.0 * bytes / rate / channels / bits; }
};

[[noreturn]] void Fail(const char* path, const char* why)
{
    std::fprintf(stderr, "Error: '%s' %s\n", path, why);
    std::exit(1);
}

/// Reads a little-endian number from the file.
template <typename Number>
bool Read(FILE* file, Number& number)
{
    unsigned char bytes[sizeof(Number)];
    if (std::fread(bytes, sizeof bytes, 1, file) != 1) {
        return false;
    }
    number = 0;
    for (std::size_t i = sizeof bytes; i > 0; --i) {
        number = static_cast<Number>(number << 8 | bytes[i - 1]);
    }
    return true;
}

bool ReadId(FILE* file, std::string& id)
{
    id.resize(4);
    return std::fread(id.data(), 4, 1, file) == 1;
}

/// Reads the chunks before the samples.
Sound ReadHeader(FILE* file, const char* path)
{
    std::string riff;
    std::string wave;
    std::uint32_t size = 0;
    if (!ReadId(file, riff) || !Read(file, size) || !ReadId(file, wave) || riff != "RIFF" ||
        wave != "WAVE") {
        Fail(path, "is not a riff/wave file");
    }
    Sound sound;
    std::string id;
    while (ReadId(file, id) && Read(file, size)) {
        if (id == "data") {
            sound.bytes = size;
            return sound;
        }
        const long end = std::ftell(file) + static_cast<long>(size);
        if (id == "fmt ") {
            std::uint16_t format = 0;
            std::uint32_t byteRate = 0;
            std::uint16_t blockAlign = 0;
            if (!Read(file, format) || !Read(file, sound.channels) || !Read(file, sound.rate) ||
                !Read(file, byteRate) || !Read(file, blockAlign) || !Read(file, sound.bits)) {
                Fail(path, "ends in its header");
            }
        }
        std::fseek(file, end, SEEK_SET);
    }
    Fail(path, "has no samples");
}

/// Records what happens to the sound, for tests to read.
void Note(const char* what, const char* path)
{
    if (FILE* notes = std::fopen("/run/board/received/tinyplay", "a")) {
        std::fprintf(notes, "%s %s\n", what, path);
        std::fclose(notes);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "Usage: %s file.wav\n", argv[0]);
        return 1;
    }
    const char* const path = argv[1];
    FILE* file = std::fopen(path, "rb");
    if (file == nullptr) {
        Fail(path, "failed to open file");
    }
    const Sound sound = ReadHeader(file, path);
    std::fclose(file);
    if (sound.channels == 0 || sound.rate == 0 || sound.bits < 8) {
        Fail(path, "has samples of no known format");
    }

    std::printf("Playing sample: %u ch, %u hz, %u bit\n", unsigned(sound.channels),
                unsigned(sound.rate), unsigned(sound.bits));
    Note("playing", path);
    const double seconds = sound.Seconds();
    timespec rest = {};
    rest.tv_sec = static_cast<time_t>(seconds);
    rest.tv_nsec = static_cast<long>((seconds - double(rest.tv_sec)) * 1e9);
    nanosleep(&rest, nullptr);
    Note("played", path);
    return 0;
}
