#pragma once

class QGridLayout;
class QPushButton;
class QSize;
class QVBoxLayout;
class QWidget;

/// The object name of a widget, which is never shown.
struct Name {
    Name() = default;
    explicit Name(const char* name) : text(name) {}

    const char* text = "";
};

/// What a button shows and is called.
struct Button {
    const char* textKey = nullptr;
    Name name = {};
};

/// What stands in a row, from left to right. A row can do without a field or a button.
struct Row {
    const char* titleKey = nullptr;
    QWidget* field = nullptr;
    Button button = {};
};

/// A button of a fixed size.
QPushButton* NewButton(const Button& button, const QSize& size, QWidget* parent);

/// Adds a row to a page's grid and returns its button. `size` is the title's and the button's. The
/// Tab key goes from the field to the button.
QPushButton* AddRow(QGridLayout* grid, int row, const QSize& size, const Row& content);

/// Adds a row without a button to a page's grid. The field takes the button's place as well.
void AddWideRow(QGridLayout* grid, int row, const QSize& titleSize, const Row& content);

/// Adds a row to a column of rows and returns its button. A row without a button is the last one:
/// its field takes the height left.
QPushButton* AddRow(QVBoxLayout* column, const Row& content);

/// Adds the row below all others of a page's grid, which takes the height left.
void AddFiller(QGridLayout* grid, int row);
