#include "simulated-board/tour/Report.h"

#include <QXmlStreamWriter>

namespace
{

const char* const style = R"(
:root { color-scheme: light; }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1rem; max-width: 76rem; font: 1rem/1.4 sans-serif; color: #222;
       background: #fff; }
h1 { margin: 0; padding: .6rem 1rem; border-radius: .3rem; color: #fff; font-size: 1.4rem; }
h1.right { background: #1a7f37; }
h1.wrong { background: #c4161c; }
h2 { margin: 2rem 0 .5rem; font-size: 1.15rem; }
dl { display: grid; grid-template-columns: auto 1fr; gap: .2rem 1rem; margin: 1rem 0; }
dt { color: #666; }
dd { margin: 0; overflow-wrap: anywhere; }
table { width: 100%; table-layout: fixed; border-collapse: collapse; }
th, td { padding: .35rem .6rem; border-bottom: 1px solid #ddd; text-align: left;
         vertical-align: top; overflow-wrap: anywhere; white-space: pre-line; }
th { color: #666; font-weight: normal; }
th:nth-child(1) { width: 15%; }
th:nth-child(2) { width: 19%; }
th.time { width: 5rem; text-align: right; }
td.time { text-align: right; white-space: nowrap; }
.wrong td { background: #fde8e8; }
.wrong td:first-child { border-left: .3rem solid #c4161c; }
.note { color: #666; font-size: .9rem; }
.pictures { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 22rem), 1fr));
            gap: 1rem; }
figure { margin: 0; }
img { width: 100%; border: 1px solid #ccc; }
figcaption { color: #666; font-size: .9rem; }
@media (max-width: 40rem) {
  thead { display: none; }
  tr { display: block; padding: .3rem 0; border-bottom: 1px solid #ddd; }
  td { display: block; border: 0; padding: .1rem .6rem; }
  .wrong td { border-left: .3rem solid #c4161c; }
  td:nth-child(2) { font-weight: bold; }
  td[data-column]::before { content: attr(data-column) ': '; color: #666; }
  td.time { text-align: left; }
}
)";

QString Seconds(qint64 ms)
{
    return QString::number(static_cast<double>(ms) / 1000, 'f', 1) + " s";
}

void WriteText(QXmlStreamWriter& html, const QString& element, const QString& text,
               const QString& cssClass = {})
{
    html.writeStartElement(element);
    if (!cssClass.isEmpty()) {
        html.writeAttribute("class", cssClass);
    }
    html.writeCharacters(Visible(text));
    html.writeEndElement();
}

QString VerdictOf(const Report& report)
{
    if (!report.incomplete.isEmpty()) {
        return "Incomplete: " + report.incomplete;
    }
    const int wrong = report.Count(Report::Verdict::Wrong);
    return wrong == 0 ? QString("Passed") : QString("%1 wrong").arg(wrong);
}

void WriteHead(QXmlStreamWriter& html, const Report& report)
{
    html.writeStartElement("head");
    html.writeEmptyElement("meta");
    html.writeAttribute("charset", "utf-8");
    html.writeEmptyElement("meta");
    html.writeAttribute("name", "viewport");
    html.writeAttribute("content", "width=device-width, initial-scale=1");
    WriteText(html, "title", "MoskTest: " + VerdictOf(report));
    html.writeStartElement("style");
    // It must have no character that XML escapes: in HTML a style has no escapes.
    html.writeCharacters(style);
    html.writeEndElement();
    html.writeEndElement();
}

void WriteFacts(QXmlStreamWriter& html, const Report& report)
{
    const QString checks = QString("%1 right, %2 wrong, %3 left out")
                               .arg(report.Count(Report::Verdict::Right))
                               .arg(report.Count(Report::Verdict::Wrong))
                               .arg(report.Count(Report::Verdict::LeftOut));
    const QString facts[][2] = {
        {"Board", report.board},
        {"Kernel", report.kernel},
        {"Program", report.program},
        {"Date", report.begun.toString("yyyy-MM-dd hh:mm:ss t")},
        {"Checks", checks + " in " + Seconds(report.ms)},
    };
    html.writeStartElement("dl");
    for (const auto& [name, value] : facts) {
        WriteText(html, "dt", name);
        WriteText(html, "dd", value);
    }
    html.writeEndElement();
}

/// Writes a cell. On a small screen the cells stand below each other, this one behind its column's
/// name.
void WriteCell(QXmlStreamWriter& html, const QString& column, const QString& text,
               const QString& note = {})
{
    html.writeStartElement("td");
    html.writeAttribute("data-column", column);
    html.writeCharacters(Visible(text));
    if (!note.isEmpty()) {
        WriteText(html, "div", note, "note");
    }
    html.writeEndElement();
}

void WriteRow(QXmlStreamWriter& html, const Report::Check& check)
{
    WriteText(html, "td", QString("%1, %2").arg(check.page, check.language));
    WriteText(html, "td", check.name);
    if (check.verdict == Report::Verdict::LeftOut) {
        WriteText(html, "td", check.note);
        return;
    }
    WriteCell(html, "shown", check.shown);
    WriteCell(html, "expected", check.expected, check.note);
    WriteText(html, "td", Seconds(check.ms), "time");
}

void WriteColumns(QXmlStreamWriter& html, Report::Verdict verdict)
{
    const QStringList columns = verdict == Report::Verdict::LeftOut
                                    ? QStringList{"Page", "Check", "Why"}
                                    : QStringList{"Page", "Check", "Shown", "Expected", "Time"};
    html.writeStartElement("thead");
    html.writeStartElement("tr");
    for (const QString& column : columns) {
        WriteText(html, "th", column, column == "Time" ? "time" : "");
    }
    html.writeEndElement();
    html.writeEndElement();
}

void WriteChecks(QXmlStreamWriter& html, const Report& report, Report::Verdict verdict,
                 const QString& title, const QString& cssClass)
{
    if (report.Count(verdict) == 0) {
        return;
    }
    WriteText(html, "h2", title);
    html.writeStartElement("table");
    html.writeAttribute("class", cssClass);
    WriteColumns(html, verdict);
    html.writeStartElement("tbody");
    for (const Report::Check& check : report.checks) {
        if (check.verdict == verdict) {
            html.writeStartElement("tr");
            WriteRow(html, check);
            html.writeEndElement();
        }
    }
    html.writeEndElement();
    html.writeEndElement();
}

void WritePictures(QXmlStreamWriter& html, const Report& report)
{
    WriteText(html, "h2", "Pictures");
    html.writeStartElement("div");
    html.writeAttribute("class", "pictures");
    for (const Report::Picture& picture : report.pictures) {
        const QString name = QString("%1, %2").arg(picture.name, picture.language);
        html.writeStartElement("figure");
        html.writeEmptyElement("img");
        html.writeAttribute("alt", name);
        html.writeAttribute("src",
                            "data:image/png;base64," + QString::fromLatin1(picture.png.toBase64()));
        WriteText(html, "figcaption", name);
        html.writeEndElement();
    }
    html.writeEndElement();
}

} // namespace

QByteArray HtmlOf(const Report& report)
{
    QByteArray text;
    QXmlStreamWriter html(&text);
    html.writeDTD("<!DOCTYPE html>\n");
    html.writeStartElement("html");
    html.writeAttribute("lang", "en");
    WriteHead(html, report);
    html.writeStartElement("body");
    WriteText(html, "h1", VerdictOf(report), report.IsGood() ? "right" : "wrong");
    WriteFacts(html, report);
    WriteChecks(html, report, Report::Verdict::Wrong, "Wrong", "wrong");
    WriteChecks(html, report, Report::Verdict::LeftOut, "Left out", "left-out");
    WriteChecks(html, report, Report::Verdict::Right, "Right", "right");
    WritePictures(html, report);
    html.writeEndElement();
    html.writeEndElement();
    return text;
}
