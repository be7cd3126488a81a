#pragma once

#include <QWidget>

class QVBoxLayout;

/// The room below the header. It shows one page at a time and builds each anew when it is opened.
class BodyWidget : public QWidget
{
    Q_OBJECT

public:
    enum PageId {
        NoPage = 0,
        HomePage = 1,
        BasicPage = 2,
        SerialPage = 3,
        DatabasePage = 4,
        ProductionPage = 5,
        WifiPage = 6,
        VoicePage = 7,
        CanPage = 8,
        RemoteAccessPage = 9,
        CameraPage = 10,
    };

    explicit BodyWidget(QWidget* parent);

    /// Deletes the page shown and builds the page of `id`; the page already open is kept, and an id
    /// outside 1 to 10 leaves the body empty. Never call it from a slot of the page shown.
    /// Invokable by name: some pages have no tab and are opened by id only.
    Q_INVOKABLE void OpenPage(int id);

    /// Builds the open page anew, in the current language.
    void TranslateUI();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void ClosePage();
    QWidget* BuildPage(int id);

    QVBoxLayout* m_layout = nullptr;
    int m_pageId = NoPage;
    QWidget* m_page = nullptr;
};
