// Feeds the production page with whatever libFuzzer thinks of. An input is chunks of a flashing
// log, each behind a byte with its length; the page must show them as its rules say.

#include "instruments/ReceiveView.h"
#include "protocols/FlashingLog.h"
#include "pages/ProductionTester.h"

#include <QApplication>
#include <QTabWidget>

#include <cstdlib>
#include <cstring>

namespace
{

void Require(bool held, const char* what)
{
    if (!held) {
        qCritical("Broken: %s", what);
        std::abort();
    }
}

QVector<QByteArray> ChunksOf(const QByteArray& input)
{
    QVector<QByteArray> chunks;
    for (int at = 0; at < input.size();) {
        const int size = static_cast<unsigned char>(input.at(at));
        chunks.append(input.mid(at + 1, size));
        at += 1 + size;
    }
    return chunks;
}

/// A page of its own for each input would have the input's cost drowned in that of the page.
class Page
{
public:
    Page() : m_page(nullptr)
    {
        auto* tabs = m_page.findChild<QTabWidget*>();
        m_summary = qobject_cast<ReceiveView*>(tabs->widget(0));
        m_detail = qobject_cast<ReceiveView*>(tabs->widget(1));
    }

    /// What the page posts for the chunks, in order.
    QStringList Play(const QVector<QByteArray>& chunks)
    {
        // Whatever the last input left: an end to its line and no text. The flags it may have set
        // change a text only, not what is posted.
        m_page.ProcessData("\n");
        m_summary->Clear();
        m_detail->Clear();
        for (const QByteArray& chunk : chunks) {
            m_page.ProcessData(chunk);
        }
        m_summary->ShowGathered();
        m_detail->ShowGathered();
        QStringList posted = m_summary->toPlainText().split('\n');
        posted.removeLast();
        return posted;
    }

    QString Detail() const { return m_detail->toPlainText(); }

private:
    ToolProductionTest m_page;
    ReceiveView* m_summary = nullptr;
    ReceiveView* m_detail = nullptr;
};

/// How many lines of the chunks hold a marker, told in another way than the page's.
int CountMarkers(const QVector<QByteArray>& chunks)
{
    int count = 0;
    QString line;
    for (const QByteArray& chunk : chunks) {
        const bool hasFeed = chunk.contains('\n');
        const char end = !hasFeed && chunk.indexOf('\r') > 0 ? '\r' : '\n';
        bool isCut = false;
        QByteArray piece;
        const auto endPiece = [&piece, &line, &isCut] {
            line += QString::fromUtf8(piece);
            piece.clear();
            isCut = false;
        };
        for (const char byte : chunk) {
            if (byte == end) {
                endPiece();
                count += FindMarker(line) != LogMarker::None ? 1 : 0;
                line.clear();
            } else if (byte == '\0' || isCut) {
                isCut = true;
            } else {
                piece += byte;
            }
        }
        endPiece();
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "*.debug=false");
    new QApplication(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size)
{
    // Never deleted, like the application: libFuzzer ends the process its own way.
    static auto* page = new Page;
    const QByteArray input(reinterpret_cast<const char*>(bytes), static_cast<int>(size));
    const QVector<QByteArray> chunks = ChunksOf(input);

    const QStringList posted = page->Play(chunks);
    Require(posted.size() == CountMarkers(chunks), "one result for each line with a marker");
    for (const QString& line : posted) {
        Require(line.startsWith("******** "), "the form of a result");
    }

    // Without CR, NUL and results the detail shows the bytes, and the chunks make no difference.
    QByteArray all;
    for (const QByteArray& chunk : chunks) {
        all += chunk;
    }
    if (!all.contains('\r') && !all.contains('\0')) {
        bool isAscii = true;
        for (const char byte : qAsConst(all)) {
            isAscii = isAscii && static_cast<signed char>(byte) > 0;
        }
        if (posted.isEmpty() && isAscii) {
            Require(page->Detail() == QString::fromLatin1(all), "the detail is the log");
        }
        const int count = page->Play({all}).size();
        Require(count == posted.size(), "chunks make no difference");
    }
    return 0;
}
