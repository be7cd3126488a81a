#include "simulated-board/operator/OperatorServer.h"

#include <QGenericPlugin>

/// The plug-in that Qt loads for QT_QPA_GENERIC_PLUGINS=operator:/path/of/the/socket.
class OperatorPlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "operator.json")

public:
    QObject* create(const QString& /*name*/, const QString& socketPath) override
    {
        return new OperatorServer(socketPath);
    }
};

#include "OperatorPlugin.moc"
