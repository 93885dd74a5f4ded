#include "refhost/oskerin/simulated_reader.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

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

TEST_F(CardReaderTest, ForgetsAnErrorWithTheNextStepThatWorks) {
    Connect();
    reader_.Confirm();
    reader_.Start("1");
    EXPECT_EQ(reader_.TakeResult(),
              Result("ApplicationSelection", "call HandleAidSelecttion to take the card's application"));
}

}  // namespace
}  // namespace paylodge::refhost
