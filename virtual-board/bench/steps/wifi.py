"""Wi-Fi with the real supplicant, and a passphrase typed on the on-screen keyboard."""

from bench.report import wait_for
from bench.steps.network import type_into

STATUS, PASSPHRASE, TARGET, RESULT = (f"bodyWidget QLineEdit[{i}]" for i in range(4))
NETWORKS = "bodyWidget QComboBox"
# A shell that read this name as a command would reboot the board.
HOSTILE = "it's$(reboot)"
GREY = (240, 240, 240)


def open_page(bench):
    program = bench.program
    program.open_tab("Wifi")
    if program.text("m_btnOpenWifi") == "Open":
        program.tap("m_btnOpenWifi")
    return program.text("m_btnOpenWifi")


def scan(bench):
    """Scans until both networks are listed: the page lists what the supplicant knows by then."""
    def is_complete():
        bench.program.tap("btnScan")
        names = [item.split(" ")[0] for item in bench.program.items(NETWORKS)]
        return "MoskBench" in names and HOSTILE in names and names
    return wait_for(is_complete, 90, 3)


def networks(bench):
    report = bench.report
    report.check("switched on", open_page(bench), "Close")
    report.check("networks", sorted(scan(bench) or []), ["MoskBench", HOSTILE])


def join(bench, network, expected):
    """Joins by a tap; the link comes up a while after it. Returns the state that the page shows."""
    program = bench.program
    names = scan(bench)
    program.choose(NETWORKS, names.index(network))
    program.tap("btnConnect")

    def is_shown():
        program.tap("btnRef")
        return program.text(STATUS) == expected
    wait_for(is_shown, 30, 1)
    return program.text(STATUS)


def keyboard(bench):
    """The keys leave the field and the page above it in sight."""
    program, report = bench.program, bench.report
    open_page(bench)
    bench.keyboard.open_for(PASSPHRASE)
    report.check("keyboard", bench.keyboard.is_open(), True)
    panel, field = bench.keyboard.panel, program.widget(PASSPHRASE)
    report.judge("the field ends above the keys", field.y + field.height, f"<= {panel.y}",
                 0 <= field.y and field.y + field.height <= panel.y)
    colours = bench.screen.look().colours(0, 0, bench.screen.width, panel.y)
    share = colours.get(GREY, 0) / sum(colours.values())
    report.judge("of what is above the keys is the page's grey", f"{share:.0%}", "over 30%",
                 share > 0.3)
    bench.keyboard.type("Wrong.pass1")
    report.check("typed", program.text(PASSPHRASE), "Wrong.pass1")
    bench.picture("keyboard")
    bench.keyboard.hide()


def wrong_passphrase(bench):
    open_page(bench)
    type_into(bench, PASSPHRASE, "87654321")
    bench.report.check("wrong passphrase", join(bench, "MoskBench", "never"), "Disconnect")


def right_passphrase(bench):
    program, report = bench.program, bench.report
    open_page(bench)
    type_into(bench, PASSPHRASE, "12345678")
    report.check("typed", program.text(PASSPHRASE), "12345678")
    report.check("right passphrase", join(bench, "MoskBench", "Connected MoskBench"),
                 "Connected MoskBench")
    bench.picture("wifi")
    type_into(bench, TARGET, "192.168.20.1")
    program.tap("btnPing")
    report.check("ping", program.status(RESULT), "Succeeded!, ok")
    program.tap("btnSave")
    saved = bench.console.text("grep -c 'ssid=\"MoskBench\"' /etc/wpa_supplicant.conf")
    report.check("saved", saved, "1")


def hostile_name(bench):
    report = bench.report
    open_page(bench)
    type_into(bench, PASSPHRASE, "12345678")
    uptime = float(bench.console.text("cut -d ' ' -f 1 /proc/uptime"))
    shown = join(bench, HOSTILE, f"Connected {HOSTILE}")
    report.check("joined", shown, f"Connected {HOSTILE}")
    now = float(bench.console.text("cut -d ' ' -f 1 /proc/uptime"))
    report.check("no reboot", now > uptime and bool(bench.program_id()), True)


def switched_off(bench):
    program, report = bench.program, bench.report
    open_page(bench)
    program.tap("m_btnOpenWifi")
    report.check("switched off", program.text(STATUS), "Disconnect")
    program.tap("btnPing")
    report.check("ping", program.status(RESULT), "Failed!, error")
