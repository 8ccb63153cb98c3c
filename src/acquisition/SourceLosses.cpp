#include "SourceLosses.h"

#include "DataProvider.h"

namespace corvalog {

SourceLosses sourceLosses(
    const DataProvider &driver, std::uint64_t unstored, std::uint64_t droppedHeld)
{
    SourceLosses losses { unstored, driver.droppedInInbox() + droppedHeld, driver.droppedBySystem(),
        driver.malformedCount(), {} };
    const std::vector<std::string> reasons = driver.malformedMessages();
    if (!reasons.empty())
        losses.firstMalformed = reasons.front();
    return losses;
}

std::vector<std::string> lossSentences(const SourceLosses &losses)
{
    std::vector<std::string> sentences;
    if (losses.unstored > 0 || losses.droppedWaiting > 0)
        sentences.push_back(std::to_string(losses.unstored) + " packets could not be stored, "
            + std::to_string(losses.droppedWaiting) + " were dropped waiting");
    if (losses.droppedBySystem > 0)
        sentences.push_back(std::to_string(losses.droppedBySystem)
            + " datagrams were dropped by the system before they could be read (its receive "
              "buffer was full)");
    if (losses.malformed > 0)
        sentences.push_back(std::to_string(losses.malformed)
            + " lines could not be read and were skipped"
            + (losses.firstMalformed.empty() ? "" : " (the first: " + losses.firstMalformed + ")"));
    return sentences;
}

std::string lossWarning(const SourceLosses &losses)
{
    std::string text = "Packets from the data source were lost:";
    for (const std::string &sentence : lossSentences(losses))
        text += " " + sentence + ".";
    return text + " Further losses are not told until a workspace is activated again.";
}

} // namespace corvalog
