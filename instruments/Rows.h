#pragma once

class QPushButton;
class QString;
class QVBoxLayout;
class QWidget;

/// Adds a row of a port's page: its title, its field and its button, which is returned.
QPushButton* AddPortRow(QVBoxLayout* layout, const QString& titleKey, QWidget* field,
                        const QString& buttonName, const QString& buttonKey);

/// Adds the last row of a port's page: its title and the view that takes the height left.
void AddPortView(QVBoxLayout* layout, const QString& titleKey, QWidget* view);
