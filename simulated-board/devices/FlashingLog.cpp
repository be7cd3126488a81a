#include "simulated-board/devices/FlashingLog.h"

#include <cstdio>
#include <initializer_list>
#include <random>

namespace
{

class Writer
{
public:
    explicit Writer(const FlashingRun& run) : m_run(run), m_random(run.seed) {}

    /// The boot loader stamps its lines in ms. The kernel stamps them in seconds, padded or not.
    enum Stamp { Loader, Kernel, PaddedKernel, Bare };

    void Line(Stamp stamp, const std::string& text)
    {
        m_ms += 1 + Below(20);
        m_log += Stamped(stamp) + text + m_run.lineEnd;
    }

    /// A line with a message from the other side of the board in the middle.
    void TornLine(const std::string& start, const std::string& intruder, const std::string& rest)
    {
        m_ms += 1 + Below(20);
        m_log += Stamped(Loader) + start + intruder + rest + m_run.lineEnd;
    }

    /// Two messages on one line, because a line end was lost.
    void DoubleLine(const std::string& first, const std::string& second)
    {
        m_ms += 1 + Below(20);
        m_log += Stamped(Loader) + first + Stamped(Kernel) + second + m_run.lineEnd;
    }

    void Progress(const std::string& text)
    {
        for (int percent = 0; percent <= 100; percent += 20) {
            const std::string count = text + " " + std::to_string(percent) + "%";
            if (m_run.countsWithReturns) {
                m_log += count + "\r";
            } else {
                Line(Bare, count);
            }
        }
        if (m_run.countsWithReturns) {
            m_log += m_run.lineEnd;
        }
    }

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    std::string Blank() { return Below(2) == 0 ? " " : ""; }

    std::string Take() { return std::move(m_log); }

private:
    std::string Stamped(Stamp stamp) const
    {
        char text[32] = "";
        switch (stamp) {
        case Loader:
            std::snprintf(text, sizeof text, "[%d]", m_ms);
            break;
        case Kernel:
            std::snprintf(text, sizeof text, "[%d.%03d] ", m_ms / 1000, m_ms % 1000);
            break;
        case PaddedKernel:
            std::snprintf(text, sizeof text, "[%7d.%03d] ", m_ms / 1000, m_ms % 1000);
            break;
        case Bare:
            break;
        }
        return text;
    }

    const FlashingRun& m_run;
    std::mt19937 m_random;
    std::string m_log;
    int m_ms = 100;
};

/// The start: memory, storage, and the error messages that every good run has.
void WriteStart(Writer& log, const FlashingRun& run)
{
    log.Line(Writer::Loader, "HELLO! BOOT0 is starting!");
    log.Line(Writer::Loader, "boot0 commit : 8d2f3c");
    log.Line(Writer::Loader, "dram size = 1024 MB");
    for (int i = 0; i < 60; ++i) {
        log.Line(Writer::Loader, "dram para[" + std::to_string(i) + "] = 0x" +
                                     std::to_string(10000 + log.Below(80000)));
    }
    for (const char* complaint :
         {"get pll_tune fail, use default", "fail to find part named env-redund",
          "error: no battery exist", "axp: probe error, id 0x00", "key_init: no key err -1",
          "request irq failed for keypad", "hdmi hpd err", "can not get boot logo, err = -2"}) {
        log.Line(Writer::Loader, complaint);
    }
    if (run.isNand) {
        log.Line(Writer::Loader, "nand: id 98 dc 90 26, ecc err limit 8");
    } else {
        log.Line(Writer::Loader, "mmc 2: try ddr50 failed, fall back to hs200");
        // Printed at each normal boot, too, whatever happened to the card.
        log.Line(Writer::Loader, "[mmc]: *Try SD card 2*");
    }
    log.TornLine("workmode = ", "a40i login: ", "16");
    log.Line(Writer::PaddedKernel, "usb 1-1: device descriptor read/64, error -71");
}

void WriteErase(Writer& log)
{
    log.Line(Writer::Loader, "begin to erase");
    log.Line(Writer::Loader, "begin to erase flash" + log.Blank());
    for (int i = 0; i < 120; ++i) {
        log.Line(Writer::Loader, "erase block " + std::to_string(i * 1024) + " done");
    }
    log.TornLine("successed in erasing flash", "", log.Blank());
}

void WritePart(Writer& log, const std::string& name, int blocks, bool succeeds = true)
{
    log.Line(Writer::Loader, "begin to download part " + name);
    for (int i = 0; i < blocks; ++i) {
        switch (log.Below(12)) {
        case 0:
            log.DoubleLine("flash write ok, block " + std::to_string(i), "random: crng init done");
            break;
        case 1:
            log.Line(Writer::Kernel, "mmc0: cmd 25 retry, data err cleared");
            break;
        case 2:
            log.TornLine("sparse: chunk ", "a40i login: [   12.004] usb 1-1: reset ",
                         std::to_string(i) + "(raw)");
            break;
        default:
            log.Line(log.Below(3) == 0 ? Writer::PaddedKernel : Writer::Loader,
                     "sparse: chunk " + std::to_string(i) + "(raw) to sector " +
                         std::to_string(8192 + i * 2048));
            break;
        }
    }
    log.Progress("part " + name);
    log.Line(Writer::Loader, succeeds ? "successed in download part " + name + log.Blank()
                                      : "download part " + name + " fail");
}

void WriteSelfTest(Writer& log, bool passes)
{
    log.Line(Writer::Bare, "");
    log.Line(Writer::Kernel, "eth0: link up, 100 Mbps, no fail counted");
    log.Line(Writer::Bare, std::string("MOSK_HARD_NET: ") + (passes ? "ok" : "fail"));
    log.Line(Writer::Bare, std::string("MOSK_HARD_EMMC:") + (passes ? "ok 7.1G" : "fail"));
    log.Line(Writer::Bare, std::string("MOSK_HARD_DDR:  ") + (passes ? "ok 1024M" : "fail"));
}

} // namespace

std::string FlashingLog(const FlashingRun& run)
{
    Writer log(run);
    WriteStart(log, run);
    WriteErase(log);
    WritePart(log, "boot-resource", 60);
    WritePart(log, "env", 5);
    WritePart(log, "boot", 120);
    WritePart(log, "rootfs", 640, run.outcome != FlashingRun::Outcome::NoRootfs);
    if (run.outcome == FlashingRun::Outcome::Stuck) {
        log.Line(Writer::Loader, "begin to download uboot");
        return log.Take();
    }
    log.Line(Writer::Loader, "verify part rootfs, err 0, fail 0");
    if (run.outcome == FlashingRun::Outcome::NoUboot) {
        log.Line(Writer::Loader, "download uboot fail");
    } else {
        log.Line(Writer::Loader, "successed in downloading uboot" + log.Blank());
        log.Line(Writer::Loader, "successed in downloading boot0");
    }
    log.Line(Writer::Loader, "sprite success" + log.Blank());
    WriteSelfTest(log, run.selfTestPasses);
    log.Line(Writer::Loader, run.isNand ? "mmc 2 exit failed" : "mmc 2 exit ok");
    log.Line(Writer::Loader, "next work 3: shutdown");
    return log.Take();
}
