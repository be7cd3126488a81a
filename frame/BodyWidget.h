#pragma once

#include <QWidget>

class QTimer;
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
    /// While a list or a box of the page is open this is put off; of several ids the last counts.
    /// Invokable by name: some pages have no tab and are opened by id only.
    Q_INVOKABLE void OpenPage(int id);

    /// Builds the open page anew, in the current language; put off as OpenPage() is.
    void TranslateUI();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void OnLater();

private:
    bool IsChangeDue() const;
    static bool IsPageWaiting();
    QWidget* ShownList() const;
    void ChangePage();
    void ClosePage();
    QWidget* BuildPage(int id);

    QVBoxLayout* m_layout = nullptr;
    int m_pageId = NoPage;
    QWidget* m_page = nullptr;

    /// What has been asked for: a page, and that it be built anew.
    int m_wantedId = NoPage;
    bool m_isStale = false;
    QTimer* m_later = nullptr;
};
