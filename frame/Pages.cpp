#include "frame/Pages.h"

#include "frame/StartPage.h"
#include "pages/BasicTester.h"
#include "pages/CameraTester.h"
#include "pages/CanTester.h"
#include "pages/ProductionTester.h"
#include "pages/SerialPortTester.h"
#include "pages/SqlTester.h"
#include "pages/VncTester.h"
#include "pages/VoiceTester.h"
#include "pages/WifiTester.h"

namespace
{

template <typename PageClass>
QWidget* Build(QWidget* parent)
{
    return new PageClass(parent);
}

} // namespace

const std::array<Page, 10> allPages = {{
    {BodyWidget::HomePage, "home", "Label_1000100", Build<StartPage>},
    {BodyWidget::BasicPage, "basic", "Label_1000101", Build<BasicTester>},
    {BodyWidget::SerialPage, "serial", "Label_1000102", Build<SerialPortTester>},
    {BodyWidget::DatabasePage, "database", nullptr, Build<SqlTester>},
    {BodyWidget::ProductionPage, "production", nullptr, Build<ToolProductionTest>},
    {BodyWidget::WifiPage, "wifi", "Label_1000105", Build<ToolWifiTest>},
    {BodyWidget::VoicePage, "voice", "Label_1000106", Build<VoiceTester>},
    {BodyWidget::CanPage, "can", "Label_1000107", Build<CanTester>},
    {BodyWidget::RemoteAccessPage, "remote-access", nullptr, Build<ToolVncTest>},
    {BodyWidget::CameraPage, "camera", nullptr, Build<CameraTester>},
}};
