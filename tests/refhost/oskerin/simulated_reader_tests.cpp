#include "refhost/oskerin/simulated_reader.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "refhost/oskerin/tlv.hpp"

namespace paylodge::refhost {
namespace {

[[nodiscard]] std::string Result(std::string_view state, std::string_view message) {
    return std::string(R"({"state":")").append(state).append(R"(","message":")").append(message).append("\"}");
}
[[nodiscard]] std::string Error(std::string_view message) { return Result("Error", message); }

// The value of a tag, or "(none)".
[[nodiscard]] std::string ValueOf(const std::string& data, std::string_view tag) {
    const auto items = DecodeTlv(data);
    const auto found = std::ranges::find(*items, tag, &TlvItem::tag);
    return found == items->end() ? "(none)" : found->value;
}

// A reader that a payment has brought to some step.
class CardReaderTest : public ::testing::Test {
  protected:
    void Connect() {
        reader_.InitializeSession();
        reader_.Connect();
    }
    void Start() {
        Connect();
        reader_.Start("12.50");
    }
    void SelectApplication() {
        Start();
        reader_.SelectApplication();
    }
    void Authorize(std::string_view answer) {
        SelectApplication();
        reader_.SendOnlineResult(answer);
    }
    void Complete() {
        Authorize("APPROVED");
        reader_.Confirm();
    }

    CardReader reader_;
};

TEST_F(CardReaderTest, TellsAtEachStepWhatItWaitsFor) {
    EXPECT_EQ(reader_.TakeResult(), Result("NoSession", "call InitializeSession"));
    reader_.InitializeSession();
    EXPECT_EQ(reader_.TakeResult(), Result("Idle", "call ConnectDevice, then StartEMV with the amount"));
    reader_.Connect();
    reader_.Start("12.50");
    EXPECT_EQ(reader_.TakeResult(),
              Result("ApplicationSelection", "call HandleAidSelecttion to take the card's application"));
    reader_.SelectApplication();
    EXPECT_EQ(reader_.TakeResult(),
              Result("OnlineAuthorization", "authorize with EMVGetCardParameters, then call SendOnlineProcessResult"));
    reader_.SendOnlineResult("00");
    EXPECT_EQ(reader_.TakeResult(), Result("FinalConfirmation", "call ShowFinalConfirmationWindow"));
    reader_.Confirm();
    EXPECT_EQ(reader_.TakeResult(), Result("Completed", "take EMVGetBatchData, then call DisconnectDevice"));
    reader_.Disconnect();
    EXPECT_EQ(reader_.TakeResult(), Result("Idle", "call ConnectDevice, then StartEMV with the amount"));
}

TEST_F(CardReaderTest, IsConnectedFromConnectToDisconnect) {
    EXPECT_FALSE(reader_.IsConnected());
    Connect();
    EXPECT_TRUE(reader_.IsConnected());
    reader_.ResetSession();
    EXPECT_TRUE(reader_.IsConnected());
    reader_.Disconnect();
    EXPECT_FALSE(reader_.IsConnected());
    EXPECT_EQ(reader_.TakeResult(), Result("NoSession", "call InitializeSession"));
}

TEST_F(CardReaderTest, ConnectsWithinASessionOnly) {
    reader_.Connect();
    EXPECT_FALSE(reader_.IsConnected());
    EXPECT_EQ(reader_.TakeResult(), Error("ConnectDevice: there is no session; call InitializeSession first"));
}

TEST_F(CardReaderTest, HasCardParametersFromTheApplicationOn) {
    Start();
    EXPECT_EQ(reader_.CardParameters(), "");
    reader_.SelectApplication();
    const std::string parameters = reader_.CardParameters();
    EXPECT_EQ(ValueOf(parameters, "9F02"), "000000001250");
    EXPECT_EQ(ValueOf(parameters, "5A"), "0000000000001119");
    EXPECT_EQ(ValueOf(parameters, "9F27"), "80");
    EXPECT_EQ(ValueOf(parameters, "9F36"), "0001");
    EXPECT_EQ(ValueOf(parameters, "8A"), "(none)");
    EXPECT_EQ(reader_.CardParameters(), parameters);
}

TEST_F(CardReaderTest, HasBatchDataOnceThePaymentIsConfirmed) {
    Authorize("00");
    EXPECT_EQ(reader_.BatchData(), "");
    reader_.Confirm();
    const std::string batch = reader_.BatchData();
    EXPECT_EQ(ValueOf(batch, "9F02"), "000000001250");
    EXPECT_EQ(ValueOf(batch, "8A"), "3030");
    EXPECT_EQ(ValueOf(batch, "9F27"), "40");
    EXPECT_NE(ValueOf(batch, "9F26"), ValueOf(reader_.CardParameters(), "9F26"));
}

TEST_F(CardReaderTest, DeclinesOnAnyOtherAnswerThanAnApproval) {
    for (const char* const answer : {"05", "", "approved", "0", "000", "DECLINED"}) {
        CardReaderTest::Authorize(answer);
        EXPECT_EQ(reader_.TakeResult(), Result("Declined", "call InitializeSession for the next payment")) << answer;
        EXPECT_EQ(reader_.BatchData(), "") << answer;
    }
}

TEST_F(CardReaderTest, ForgetsAPaymentThatIsCancelled) {
    SelectApplication();
    reader_.Cancel();
    EXPECT_EQ(reader_.TakeResult(), Result("Cancelled", "call InitializeSession for the next payment"));
    EXPECT_EQ(reader_.CardParameters(), "");
}

TEST_F(CardReaderTest, CancelsWithinASessionOnly) {
    reader_.Cancel();
    EXPECT_EQ(reader_.TakeResult(), Error("CancelCheckCard: there is no session; call InitializeSession first"));
}

TEST_F(CardReaderTest, CountsItsPayments) {
    Complete();
    reader_.Disconnect();
    const std::string first = reader_.CardParameters();
    SelectApplication();
    EXPECT_EQ(first, "");
    EXPECT_EQ(ValueOf(reader_.CardParameters(), "9F36"), "0002");
}

TEST_F(CardReaderTest, GivesTheSameDataForTheSameSteps) {
    Complete();
    const std::string batch = reader_.BatchData();
    reader_ = CardReader();
    Complete();
    EXPECT_EQ(reader_.BatchData(), batch);
}

TEST_F(CardReaderTest, DescribesItselfOnce) {
    reader_.RequestDeviceInfo();
    EXPECT_EQ(reader_.TakeResult(),
              R"({"model":"Simulated card reader","serialNumber":"SIM-0001","connected":"false"})");
    EXPECT_EQ(reader_.TakeResult(), Result("NoSession", "call InitializeSession"));
    Connect();
    reader_.RequestDeviceInfo();
    EXPECT_EQ(reader_.TakeResult(),
              R"({"model":"Simulated card reader","serialNumber":"SIM-0001","connected":"true"})");
}

struct Amount {
    const char* text;
    // As tag 9F02 has it.
    const char* digits;
};

TEST_F(CardReaderTest, TakesAmountsWithUpToTwoDecimals) {
    for (const auto& [text, digits] :
         {Amount{"12.50", "000000001250"}, Amount{"12.5", "000000001250"}, Amount{"12", "000000001200"},
          Amount{"12.", "000000001200"}, Amount{"0.01", "000000000001"}, Amount{"9999999999.99", "999999999999"}}) {
        Connect();
        reader_.Start(text);
        reader_.SelectApplication();
        EXPECT_EQ(ValueOf(reader_.CardParameters(), "9F02"), digits) << text;
    }
}

TEST_F(CardReaderTest, RefusesWhatIsNoAmount) {
    for (const char* const text :
         {"", ".", ".50", "12.505", "-1", "+1", "1,50", "1e3", " 1", "12.5.0", "99999999999"}) {
        Connect();
        reader_.Start(text);
        EXPECT_EQ(reader_.TakeResult(),
                  Error("StartEMV: the amount is not a number with at most two decimals, such as 12.50"))
            << text;
        EXPECT_EQ(reader_.CardParameters(), "") << text;
    }
}

struct Step {
    const char* name;
    std::function<void(CardReader&)> run;
};

const Step kSteps[] = {
    {"StartEMV", [](CardReader& reader) { reader.Start("1"); }},
    {"HandleAidSelecttion", [](CardReader& reader) { reader.SelectApplication(); }},
    {"SendOnlineProcessResult", [](CardReader& reader) { reader.SendOnlineResult("00"); }},
    {"ShowFinalConfirmationWindow", [](CardReader& reader) { reader.Confirm(); }},
};

TEST_F(CardReaderTest, TakesNoStepWithoutAReader) {
    for (const auto& [name, run] : kSteps) {
        reader_.InitializeSession();
        run(reader_);
        EXPECT_EQ(reader_.TakeResult(),
                  Error(std::string(name) + ": no reader is connected; call ConnectDevice first"));
    }
}

TEST_F(CardReaderTest, StaysWhereItIsAfterAStepOutOfOrder) {
    for (const auto& [name, run] : kSteps) {
        Complete();
        const std::string batch = reader_.BatchData();
        run(reader_);
        EXPECT_EQ(reader_.TakeResult(), Error(std::string(name) + ": not now; the reader is in the state Completed"));
        EXPECT_EQ(reader_.BatchData(), batch);
    }
}

// The order of calls: where each step leads from each state, with a reader connected.
TEST(CardReaderOrder, IsThatOfAPayment) {
    struct Action {
        const char* name;
        std::function<void(CardReader&)> run;
    };
    const std::vector<Action> actions = {
        {"InitializeSession", [](CardReader& reader) { reader.InitializeSession(); }},
        {"ResetSession", [](CardReader& reader) { reader.ResetSession(); }},
        {"ConnectDevice", [](CardReader& reader) { reader.Connect(); }},
        {"StartEMV", kSteps[0].run},
        {"HandleAidSelecttion", kSteps[1].run},
        {"SendOnlineProcessResult", kSteps[2].run},
        {"ShowFinalConfirmationWindow", kSteps[3].run},
        {"CancelCheckCard", [](CardReader& reader) { reader.Cancel(); }},
        {"DisconnectDevice", [](CardReader& reader) { reader.Disconnect(); }},
    };
    // How a reader comes to each state from a connected one in a session.
    const std::vector<std::pair<std::string, std::vector<size_t>>> states = {
        {"NoSession", {1}},
        {"Idle", {}},
        {"ApplicationSelection", {3}},
        {"OnlineAuthorization", {3, 4}},
        {"FinalConfirmation", {3, 4, 5}},
        {"Completed", {3, 4, 5, 6}},
        {"Cancelled", {7}},
    };
    for (const auto& [state, way] : states) {
        for (size_t action = 0; action < actions.size(); ++action) {
            CardReader reader;
            reader.InitializeSession();
            reader.Connect();
            for (const size_t step : way) {
                actions[step].run(reader);
            }
            ASSERT_NE(reader.TakeResult().find("\"" + state + "\""), std::string::npos) << state;
            const bool had_parameters = !reader.CardParameters().empty();
            actions[action].run(reader);
            const bool is_session = state != "NoSession";
            std::string next = state;
            if (action == 0) {
                next = "Idle";
            } else if (action == 1) {
                next = "NoSession";
            } else if (action == 7) {
                next = is_session ? "Cancelled" : "Error";
            } else if (action == 8) {
                next = is_session ? "Idle" : "NoSession";
            } else if (action == 2) {
                next = is_session ? state : "Error";
            } else if (action == 3) {
                next = state == "Idle" ? "ApplicationSelection" : "Error";
            } else if (action == 4) {
                next = state == "ApplicationSelection" ? "OnlineAuthorization" : "Error";
            } else if (action == 5) {
                next = state == "OnlineAuthorization" ? "FinalConfirmation" : "Error";
            } else {
                next = state == "FinalConfirmation" ? "Completed" : "Error";
            }
            EXPECT_NE(reader.TakeResult().find("{\"state\":\"" + next + "\""), std::string::npos)
                << state << ", " << actions[action].name << ": " << reader.TakeResult();
            EXPECT_EQ(reader.IsConnected(), action != 8) << state << ", " << actions[action].name;
            const bool has_parameters = next == "OnlineAuthorization" || next == "FinalConfirmation" ||
                                        next == "Completed" || (next == "Error" && had_parameters);
            EXPECT_EQ(!reader.CardParameters().empty(), has_parameters) << state << ", " << actions[action].name;
            EXPECT_EQ(!reader.BatchData().empty(), next == "Completed" || (next == "Error" && state == "Completed"))
                << state << ", " << actions[action].name;
        }
    }
}

TEST_F(CardReaderTest, HasEveryPieceOfDataOfAPayment) {
    Complete();
    const std::string data =
        "4F07F0000000010001"
        "500E53494D554C415445442043415244"
        "5A080000000000001119"
        "5F2403301231"
        "5F2A020840"
        "82021980"
        "8407F0000000010001"
        "95050000008000"
        "9A03260115"
        "9C0100"
        "9F0206000000001250"
        "9F0306000000000000"
        "9F1A020840"
        "9F3303E0F8C8"
        "9F34031E0300"
        "9F36020001"
        "9F37045EED0001";
    const std::string parameters = reader_.CardParameters();
    const std::string batch = reader_.BatchData();
    EXPECT_EQ(parameters.substr(0, data.size()), data);
    EXPECT_EQ(batch.substr(0, data.size()), data);
    EXPECT_EQ(parameters.substr(data.size(), 6), "9F2608");
    EXPECT_EQ(parameters.substr(data.size() + 6 + 16), "9F270180");
    EXPECT_EQ(batch.substr(data.size(), 8), "8A023030");
    EXPECT_EQ(batch.substr(data.size() + 8, 6), "9F2608");
    EXPECT_EQ(batch.substr(data.size() + 8 + 6 + 16), "9F270140");
}

// The hash of Fowler, Noll and Vo over the amount's digits, begun with the counter.
TEST_F(CardReaderTest, MakesTheCryptogramOfAmountAndCounter) {
    const auto hash = [](std::string_view digits, std::uint64_t counter) {
        std::uint64_t value = 14695981039346656037ULL + counter;
        for (const char digit : digits) {
            value ^= static_cast<unsigned char>(digit);
            value *= 1099511628211ULL;
        }
        char text[17];
        std::snprintf(text, sizeof text, "%016llX", static_cast<unsigned long long>(value));
        return std::string(text);
    };
    Complete();
    EXPECT_EQ(ValueOf(reader_.CardParameters(), "9F26"), hash("000000001250", 1));
    EXPECT_EQ(ValueOf(reader_.BatchData(), "9F26"), hash("000000001250", 0x10001));
}

TEST_F(CardReaderTest, ForgetsAnErrorWithTheNextStepThatWorks) {
    Connect();
    reader_.Confirm();
    reader_.Start("1");
    EXPECT_EQ(reader_.TakeResult(),
              Result("ApplicationSelection", "call HandleAidSelecttion to take the card's application"));
}

}  // namespace
}  // namespace paylodge::refhost
