#pragma once

class QLabel;
class QSize;
class QString;
class QWidget;

/// A label of a fixed size with the text of a language key, made to stand before a field. Its text
/// is never cut.
QLabel* NewTitle(const QString& key, const QSize& size, QWidget* parent);

/// Makes the letters of a widget of fixed width narrower if its text does not fit. The board's font
/// is not known, so a text may be wider there.
void NarrowText(QWidget* widget);
