#pragma once

#include <string>

/// A run of the tool that flashes a board, and the self-test of the board after it.
struct FlashingRun {
    enum class Outcome {
        Good,     ///< all of it, then the self-test, then the board goes off
        NoRootfs, ///< reports success although the root file system was never downloaded
        NoUboot,  ///< reports success although the U-Boot was never downloaded
        Stuck,    ///< stops in the middle without a word, as failing runs do
    };

    Outcome outcome = Outcome::Good;
    bool isNand = false;
    bool selfTestPasses = true;
    std::string lineEnd = "\r\n";   ///< "\r\n", "\n" or "\r"
    bool countsWithReturns = false; ///< progress counters written over each other with bare CRs
    unsigned seed = 1;              ///< what varies from run to run: stamps, prompts, blanks
};

/// The log that the board prints during such a run. It has over 1,000 lines as the real tools write
/// them, with three kinds of stamps, and with a login prompt and kernel messages in the middle of
/// lines. Good runs, too, have words such as "fail" and "err".
std::string FlashingLog(const FlashingRun& run);
