import QtQuick 2.0
import QtQuick.VirtualKeyboard 2.1
import QtQuick.VirtualKeyboard.Settings 2.1

// The keys are as wide as the window. Their height follows from the width.
Item {
    readonly property bool active: keys.active
    readonly property real keysHeight: keys.height

    InputPanel {
        id: keys

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
    }

    Component.onCompleted: {
        // The pages' fields take ASCII only: addresses, passphrases, hex, dates.
        VirtualKeyboardSettings.activeLocales = ["en_GB"]
        VirtualKeyboardSettings.locale = "en_GB"
    }
}
