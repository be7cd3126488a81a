#pragma once

#include <QObject>

/// Ends the event loop when the system asks the program to stop: SIGTERM from the init system,
/// SIGINT from a keyboard, SIGHUP from a terminal that goes away. A signal that was ignored when
/// the program started, as under nohup, stays ignored. Make one only, after the application.
class StopSignals : public QObject
{
    Q_OBJECT

public:
    StopSignals();

private slots:
    void OnSignalled();
};
