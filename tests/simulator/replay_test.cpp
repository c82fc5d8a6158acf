#include "simulator/replay.h"

#include <gtest/gtest.h>

#include <sstream>

namespace simulator {
namespace {

/// The request that a word stands for.
std::string Request(const std::string& word) {
    return "@" + word + "\r\n";
}

/// A record of words, each "REQUEST" or "REQUEST>REPLY"; the lines are counted from 1.
Trace Record(const std::string& words) {
    std::istringstream stream(words);
    Trace trace;
    for (std::string word; stream >> word;) {
        Exchange exchange;
        exchange.line = trace.exchanges.size() + 1;
        exchange.request = Request(word.substr(0, word.find('>')));
        exchange.pieces.push_back({Time::zero(), word.substr(word.find('>') + 1)});
        exchange.complete = true;
        trace.exchanges.push_back(exchange);
    }
    return trace;
}

TEST(Replay, TellsDeparturesFromTheTimingOfPolls) {
    const std::string moved =
        "SMOD=1 CPOSMR?>a SSWC? CPOSMR?>b MMVAL=1 CPOSMR?>c MCND?>m MCND?>m MCND?>s CPOSMR?>d";
    const struct {
        std::string record;
        std::string requests;
        std::string replies;  ///< "-" for silence
        std::string departures;
    } cases[] = {
        // Polls: as recorded, more often, less often, in another order.
        {moved, "SMOD=1 CPOSMR? CPOSMR? CPOSMR? MMVAL=1 MCND? MCND? MCND? CPOSMR? CPOSMR?",
         "SMOD=1 a b b MMVAL=1 m m s c d", ""},
        {moved, "SMOD=1 MMVAL=1 CPOSMR? SSWC? MCND? MCND? MCND? CPOSMR? CPOSMR?",
         "SMOD=1 MMVAL=1 c SSWC? m m s d d", ""},
        // Conditions.
        {moved, "SMOD=1 MMVAL=1 CPOSMR? MCND? CPOSMR?", "SMOD=1 MMVAL=1 c m d", "9"},
        {moved, "SMOD=1 MMVAL=1 CPOSMR? CPOSMR?", "SMOD=1 MMVAL=1 c d", "7"},
        {moved, "SMOD=1 MCND? MMVAL=1 MCND? MCND? MCND? MCND? MCND? CPOSMR? CPOSMR?",
         "SMOD=1 - MMVAL=1 m m s s s c d", "MCND? 9"},
        // Commands: another value, one missing, one more, another order, folded.
        {moved, "SMOD=1 MMVAL=2 CPOSMR? CPOSMR?", "SMOD=1 - c d", "5"},
        {"MMVAL=1 MMVAL=2 CPOSMR?>c", "MMVAL=2 CPOSMR?", "MMVAL=2 c", "1"},
        {"MMVAL=1 CPOSMR?>c", "MMVAL=1 LBRT1=5 FOO CPOSMR?", "MMVAL=1 - - c", "LBRT1=5 FOO"},
        {"LBRT1=5 MMVAL=1 CPOSMR?>c", "MMVAL=1 CPOSMR? LBRT1=5 CPOSMR?", "MMVAL=1 c LBRT1=5 c", ""},
        {"LBRT1=5 LBRT2=1 LBRT1=6 CPOSMR?>c", "LBRT1=6 CPOSMR?", "LBRT1=6 c", "2"},
        // The record begins late, or has been stopped early.
        {"CPOSMR?>a MMVAL=1", "SMOD=1 CPOSMR? MMVAL=1 MCND? SSWC?", "- a MMVAL=1 - -", ""},
    };
    for (const auto& [record, requests, replies, departures] : cases) {
        Replay replay(Record(record));
        std::istringstream stream(requests);
        std::string told;
        for (std::string word; stream >> word;) {
            const ScriptedReply reply = replay.Answer(Request(word));
            const std::string bytes = reply.pieces.empty() ? "" : reply.pieces[0].bytes;
            told += (told.empty() ? "" : " ") + (bytes.empty() ? "-" : bytes);
        }
        EXPECT_EQ(told, replies) << requests;
        EXPECT_TRUE(replay.AtEnd()) << requests;
        replay.Finish();
        std::string messages;
        for (const std::string& message : replay.TakeMessages()) {
            messages += message.starts_with("departure: ") ? message + "\n" : "";
        }
        std::istringstream wanted(departures);
        std::size_t count = 0;
        for (std::string place; wanted >> place; ++count) {
            const bool isLine = place.find_first_not_of("0123456789") == place.npos;
            const std::string text = isLine ? "line " + place + ":" : "@" + place + " here";
            EXPECT_NE(messages.find(text), messages.npos) << requests << "\n" << messages;
        }
        EXPECT_EQ(replay.Counts().Departures(), count) << requests << "\n" << messages;
    }
}

}  // namespace
}  // namespace simulator
