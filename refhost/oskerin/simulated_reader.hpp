// A simulated card reader with a card in it, which a page can drive through a whole payment. The same steps give the
// same data every time.
#pragma once

#include <string>
#include <string_view>

namespace paylodge::refhost {

// Steps of a payment, in this order: InitializeSession, Connect, Start, SelectApplication, SendOnlineResult, Confirm. A
// step that is out of order changes nothing but the result, which then says what is missing.
class CardReader {
  public:
    void InitializeSession();
    // Back to a reader without a session; a connected one stays connected.
    void ResetSession();
    void Connect();
    void Disconnect();
    [[nodiscard]] bool IsConnected() const noexcept { return is_connected_; }

    // The amount in the currency's main unit, such as "12.50".
    void Start(std::string_view amount);
    void SelectApplication();
    // "00" or "APPROVED" approves the payment, any other answer declines it.
    void SendOnlineResult(std::string_view result);
    void Confirm();
    void Cancel();

    // The next result is the description of the reader.
    void RequestDeviceInfo() noexcept { is_device_info_wanted_ = true; }
    // What the reader waits for, or the error of the last step, as a JSON object with "state" and "message"; once after
    // RequestDeviceInfo, the reader's description.
    [[nodiscard]] std::string TakeResult();
    // Card data for the authorization, from SelectApplication on; empty before.
    [[nodiscard]] std::string CardParameters() const;
    // Card data for the settlement, once the payment is confirmed; empty before.
    [[nodiscard]] std::string BatchData() const;

  private:
    enum class State {
        kNoSession,
        kIdle,
        kApplicationSelection,
        kOnlineAuthorization,
        kFinalConfirmation,
        kCompleted,
        kDeclined,
        kCancelled
    };

    [[nodiscard]] std::string DeviceInfo() const;
    // Whether the step may happen; otherwise the error says why not.
    [[nodiscard]] bool Expect(State state, std::string_view step);
    void Enter(State state);
    [[nodiscard]] static std::string_view NameOf(State state) noexcept;
    [[nodiscard]] static std::string_view NeedOf(State state) noexcept;

    State state_ = State::kNoSession;
    bool is_connected_ = false;
    bool is_device_info_wanted_ = false;
    std::string error_;
    std::string amount_digits_;
    unsigned transaction_counter_ = 0;
};

}  // namespace paylodge::refhost
