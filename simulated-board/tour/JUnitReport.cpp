#include "simulated-board/tour/Report.h"

#include <QMap>
#include <QXmlStreamWriter>

namespace
{

QString Seconds(qint64 ms)
{
    return QString::number(static_cast<double>(ms) / 1000, 'f', 3);
}

void WriteProperty(QXmlStreamWriter& xml, const QString& name, const QString& value)
{
    xml.writeEmptyElement("property");
    xml.writeAttribute("name", name);
    xml.writeAttribute("value", Visible(value));
}

void WriteCase(QXmlStreamWriter& xml, const Report::Check& check)
{
    xml.writeStartElement("testcase");
    xml.writeAttribute("classname", QString("%1.%2").arg(check.language, check.page));
    xml.writeAttribute("name", Visible(check.name));
    xml.writeAttribute("time", Seconds(check.ms));
    if (check.verdict == Report::Verdict::LeftOut) {
        xml.writeEmptyElement("skipped");
        xml.writeAttribute("message", Visible(check.note));
    } else if (check.verdict == Report::Verdict::Wrong) {
        xml.writeStartElement("failure");
        xml.writeAttribute(
            "message",
            Visible(QString("shown \"%1\", expected \"%2\"").arg(check.shown, check.expected)));
        xml.writeCharacters(Visible(check.note));
        xml.writeEndElement();
    } else {
        const QString note = check.note.isEmpty() ? QString() : QString(" (%1)").arg(check.note);
        xml.writeTextElement("system-out", Visible(check.shown + note));
    }
    xml.writeEndElement();
}

/// Readers of JUnit know no tour that ends early: it is told as a test that could not be run.
void WriteIncomplete(QXmlStreamWriter& xml, const Report& report)
{
    xml.writeStartElement("testcase");
    xml.writeAttribute("classname", "tour");
    xml.writeAttribute("name", "complete");
    xml.writeAttribute("time", "0");
    xml.writeEmptyElement("error");
    xml.writeAttribute("message", Visible("incomplete: " + report.incomplete));
    xml.writeEndElement();
}

} // namespace

QByteArray JUnitOf(const Report& report)
{
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement("testsuites");
    xml.writeStartElement("testsuite");
    xml.writeAttribute("name", "tour");
    xml.writeAttribute("timestamp", report.begun.toString(Qt::ISODate));
    xml.writeAttribute("time", Seconds(report.ms));
    const bool isIncomplete = !report.incomplete.isEmpty();
    xml.writeAttribute("tests", QString::number(report.checks.size() + (isIncomplete ? 1 : 0)));
    xml.writeAttribute("failures", QString::number(report.Count(Report::Verdict::Wrong)));
    xml.writeAttribute("errors", isIncomplete ? "1" : "0");
    xml.writeAttribute("skipped", QString::number(report.Count(Report::Verdict::LeftOut)));
    xml.writeStartElement("properties");
    WriteProperty(xml, "board", report.board);
    WriteProperty(xml, "kernel", report.kernel);
    WriteProperty(xml, "program", report.program);
    xml.writeEndElement();
    if (isIncomplete) {
        WriteIncomplete(xml, report);
    }
    for (const Report::Check& check : report.checks) {
        WriteCase(xml, check);
    }
    xml.writeEndDocument();
    return text;
}
