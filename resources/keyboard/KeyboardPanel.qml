import QtQuick 2.0
import QtQuick.VirtualKeyboard 2.1
import QtQuick.VirtualKeyboard.Settings 2.1

// The keys, as wide as the window and as high as that asks for.
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
        // What the pages take is ASCII: addresses, passphrases, hex, dates.
        VirtualKeyboardSettings.activeLocales = ["en_GB"]
        VirtualKeyboardSettings.locale = "en_GB"
    }
}
