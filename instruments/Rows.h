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

/// The text of a button, as a language key, and its object name.
struct Button {
    const char* textKey = nullptr;
    Name name = {};
};

/// The parts of a row, from left to right. The field or the button may be missing.
struct Row {
    const char* titleKey = nullptr;
    QWidget* field = nullptr;
    Button button = {};
};

/// A button of a fixed size.
QPushButton* NewButton(const Button& button, const QSize& size, QWidget* parent);

/// Adds a row to a page's grid and returns its button. `size` is the size of the title and of the
/// button. The Tab key goes from the field to the button.
QPushButton* AddRow(QGridLayout* grid, int row, const QSize& size, const Row& content);

/// Adds a row without a button to a page's grid. The field takes the button's column too.
void AddWideRow(QGridLayout* grid, int row, const QSize& titleSize, const Row& content);

/// Adds a row to a column of rows and returns its button. A row without a button must be the last
/// one: its field takes the remaining height.
QPushButton* AddRow(QVBoxLayout* column, const Row& content);

/// Adds an empty row below the others of a page's grid. It takes the remaining height.
void AddFiller(QGridLayout* grid, int row);
