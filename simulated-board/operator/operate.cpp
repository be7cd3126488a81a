#include "simulated-board/operator/Operator.h"

#include <QCoreApplication>
#include <QTextStream>

namespace
{

const char* const usage =
    R"(Usage: operate COMMAND [ARGUMENT]...
Looks into the running program and drives it, through the socket OPERATOR_SOCKET
(/run/mosktest/operator). WIDGET is an object name or a class, with an index where several
match, and may name what it lies in first: btnUsbTest, QLineEdit[2],
"bodyWidget QLineEdit[0]".
  wait                     waits until the program is up
  idle                     waits until the program has nothing left to do
  list [WIDGET]            class, name, place, state and text of each widget that matches
  text WIDGET              the text that it shows
  property WIDGET NAME     a property's value
  items WIDGET             what there is to choose from, one a line
  cells TABLE              a table's rows, one a line, with tabs between the cells
  click WIDGET [X Y]       presses it with a finger, at its centre or at a place of it
  tab WIDGET INDEX         presses a tab
  choose WIDGET INDEX      chooses an item of a combo box
  type WIDGET TEXT         types in the place of what stands there
  key KEY                  presses a key: Return, Ctrl+A
  press BUTTON             presses a button of the open box: Yes, No, Ok, or the text on it
  page PAGE                opens a page: its id, or its name
  pages                    id and name of each page, and its tab's index or "-"
  resize WIDTH HEIGHT      makes the window that size
  screenshot FILE          saves the screen as PNG
  wait-for WIDGET TEXT     waits up to 30 s until it shows the text
)";

QString Line(const QJsonObject& widget)
{
    return QString("%1 \"%2\" at %3,%4 %5x%6%7%8 \"%9\"")
        .arg(widget["class"].toString(), widget["name"].toString())
        .arg(widget["x"].toInt())
        .arg(widget["y"].toInt())
        .arg(widget["width"].toInt())
        .arg(widget["height"].toInt())
        .arg(widget["visible"].toBool() ? "" : " hidden",
             widget["enabled"].toBool() ? "" : " disabled",
             widget["text"].toString().left(200).replace('\n', "\\n"));
}

struct Command {
    const char* name;
    int arguments;
    int optional;
    void (*act)(Operator&, const QStringList&); ///< null for a command that prints something
    QString (*read)(Operator&, const QStringList&) = nullptr; ///< returns the text to print
};

const Command commands[] = {
    {"wait", 0, 0, [](Operator&, const QStringList&) {}},
    {"idle", 0, 0, [](Operator& program, const QStringList&) { program.Idle(); }},
    {"list", 0, 1, nullptr,
     [](Operator& program, const QStringList& words) {
         QStringList lines;
         const QJsonArray widgets = program.List(words.value(0));
         for (const QJsonValue& widget : widgets) {
             lines.append(Line(widget.toObject()));
         }
         return lines.join('\n');
     }},
    {"text", 1, 0, nullptr,
     [](Operator& program, const QStringList& words) { return program.Text(words[0]); }},
    {"property", 2, 0, nullptr,
     [](Operator& program, const QStringList& words) {
         const QVariant value = program.Property(words[0], words[1]);
         return value.canConvert(QMetaType::QStringList) ? value.toStringList().join(' ')
                                                         : value.toString();
     }},
    {"items", 1, 0, nullptr,
     [](Operator& program, const QStringList& words) {
         return program.Items(words[0]).join('\n');
     }},
    {"cells", 1, 0, nullptr,
     [](Operator& program, const QStringList& words) {
         QStringList lines;
         const QList<QStringList> rows = program.Cells(words[0]);
         for (const QStringList& row : rows) {
             lines.append(row.join('\t'));
         }
         return lines.join('\n');
     }},
    {"click", 1, 2,
     [](Operator& program, const QStringList& words) {
         if (words.size() == 3) {
             program.ClickAt(words[0], {words[1].toInt(), words[2].toInt()});
         } else {
             program.Click(words[0]);
         }
     }},
    {"tab", 2, 0,
     [](Operator& program, const QStringList& words) {
         program.ClickTab(words[0], words[1].toInt());
     }},
    {"choose", 2, 0,
     [](Operator& program, const QStringList& words) {
         program.Choose(words[0], words[1].toInt());
     }},
    {"type", 2, 0,
     [](Operator& program, const QStringList& words) { program.SetText(words[0], words[1]); }},
    {"key", 1, 0, [](Operator& program, const QStringList& words) { program.PressKey(words[0]); }},
    {"press", 1, 0,
     [](Operator& program, const QStringList& words) { program.PressBoxButton(words[0]); }},
    {"page", 1, 0,
     [](Operator& program, const QStringList& words) {
         bool isId = false;
         const int id = words[0].toInt(&isId);
         isId ? program.OpenPage(id) : program.OpenPage(words[0]);
     }},
    {"pages", 0, 0, nullptr,
     [](Operator& program, const QStringList&) {
         QStringList lines;
         const QJsonArray pages = program.Pages();
         for (const QJsonValue& page : pages) {
             const int tab = page["tab"].toInt();
             lines.append(QString("%1\t%2\t%3")
                              .arg(page["id"].toInt())
                              .arg(page["name"].toString(), tab < 0 ? "-" : QString::number(tab)));
         }
         return lines.join('\n');
     }},
    {"resize", 2, 0,
     [](Operator& program, const QStringList& words) {
         program.Resize(words[0].toInt(), words[1].toInt());
     }},
    {"screenshot", 1, 0,
     [](Operator& program, const QStringList& words) { program.Screenshot(words[0]); }},
    {"wait-for", 2, 0,
     [](Operator& program, const QStringList& words) {
         program.WaitForText(words[0], words[1], 30000);
     }},
};

const Command* FindCommand(const QString& name, int arguments)
{
    for (const Command& command : commands) {
        const bool fits =
            arguments == command.arguments ||
            (command.optional > 0 && arguments == command.arguments + command.optional);
        if (name == command.name && fits) {
            return &command;
        }
    }
    return nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    const QString name = words.isEmpty() ? QString() : words.takeFirst();
    const Command* command = FindCommand(name, words.size());
    QTextStream errors(stderr);
    if (command == nullptr) {
        errors << usage;
        return 2;
    }

    Operator program;
    QString shown;
    // Only "wait" waits for a program that is still starting.
    if (program.Connect(name == "wait" ? 15000 : 2000)) {
        if (command->act != nullptr) {
            command->act(program, words);
        } else {
            shown = command->read(program, words);
        }
    }
    if (!program.Error().isEmpty()) {
        errors << "operate " << name << ": " << program.Error() << '\n';
        return 1;
    }
    if (!shown.isNull()) {
        QTextStream(stdout) << shown << '\n';
    }
    return 0;
}
