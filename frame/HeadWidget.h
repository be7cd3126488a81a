#pragma once

#include <QString>
#include <QWidget>

class MoskTester;
class QTabWidget;

/// An empty page of the menu's tab widget. It holds the id of the page that its tab opens.
class HeadTabWidget : public QWidget
{
    Q_OBJECT

public:
    /// `text` is the language key of the tab's label, not the label itself.
    HeadTabWidget(int pageId, const QString& text, QWidget* parent);

    int GetPageId();
    QString GetText();

private:
    int m_pageId;
    QString m_text;
};

/// The strip at the top of the window: the logo, and the menu with a tab for each page of daily
/// use.
class HeadWidget : public QWidget
{
    Q_OBJECT

public:
    explicit HeadWidget(MoskTester* parent);

    void InitTabWidget(QTabWidget* tab);

    /// Labels the tabs in the current language.
    void TranslateUI();

    /// Selects the first tab and opens its page, the home page.
    void Init();

protected:
    void paintEvent(QPaintEvent* event) override;

private slots:
    void OnCurrentIndexChanged(int index);

private:
    MoskTester* m_mainWindow;
    QTabWidget* m_menu = nullptr;
};
