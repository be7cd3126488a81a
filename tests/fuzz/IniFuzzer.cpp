// Edits INI files with inputs from libFuzzer. An input is a byte of choices, a byte with the
// value's length, the value and the file's content.

#include "protocols/IniFile.h"

#include "tests/fuzz/Require.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace
{

const IniKey keys[] = {{"General", "password"}, {"common", "server_addr"}, {"vnc", "remote_port"}};

/// Checks that QSettings reads the same values from the content.
void CheckWithQSettings(const QByteArray& content)
{
    // Each content gets its own file, because QSettings caches what it has read.
    static const QTemporaryDir s_folder;
    static int s_number = 0;
    QFile file(s_folder.filePath(QString::number(++s_number)));
    Require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(), "a file");
    file.close();
    const QSettings settings(file.fileName(), QSettings::IniFormat);
    for (const IniKey& key : keys) {
        const QByteArray path = key.section == "General" ? key.name : key.section + '/' + key.name;
        Require(settings.value(path).toString() == IniValue(content, key), "QSettings agrees");
    }
    file.remove();
}

/// Removes the parts of the content that QSettings reads differently on purpose.
QByteArray Sane(const QByteArray& content)
{
    QByteArray sane;
    std::copy_if(content.begin(), content.end(), std::back_inserter(sane), [](unsigned char c) {
        return std::isalnum(c) != 0 || (c != '\0' && std::strchr("\n\r\t =[]_.:#'", c) != nullptr);
    });
    return sane;
}

void CheckOneLineChanged(const QByteArray& before, const QByteArray& after)
{
    const auto difference = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const int begin = difference.first - before.begin();
    int end = before.size();
    for (int behind = after.size(); end > begin && behind > begin; --end, --behind) {
        if (before[end - 1] != after[behind - 1]) {
            break;
        }
    }
    const QByteArray gone = before.mid(begin, end - begin);
    Require(!gone.contains('\n') && !gone.contains('\r'), "the other lines stay");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    if (input.size() < 2) {
        return 0;
    }
    const int choices = static_cast<unsigned char>(input[0]);
    const IniKey& written = keys[choices % 3];
    const int valueSize = static_cast<unsigned char>(input[1]);
    const QString value = QString::fromUtf8(input.mid(2, valueSize));
    const QByteArray content = input.mid(2 + valueSize);

    const QByteArray after = IniWithValue(content, written, value);
    Require(IniValue(after, written) == value, "what was written is read");
    Require(IniWithValue(after, written, value) == after, "a second writing changes nothing");
    CheckOneLineChanged(content, after);

    for (const IniKey& key : keys) {
        Require(&key == &written || IniValue(after, key) == IniValue(content, key),
                "other keys keep their values");
    }
    // Only in some runs: QSettings reads files, which takes far longer than the rest.
    if (choices >= 240) {
        CheckWithQSettings(IniWithValue(Sane(content), written, value));
    }
    return 0;
}
