// Reads other programs' data from the selections of an X server: the clipboard, and the text marked with the
// mouse.
//
// The toolkit can do this, too, but does not serve the windows meanwhile: for five seconds with each request
// to a program that does not respond. Protocol: "Peer-to-Peer Communication by Means of Selections" in the
// Inter-Client Communication Conventions Manual.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QMetaObject>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

struct xcb_connection_t;
struct xcb_property_notify_event_t;
struct xcb_selection_notify_event_t;

namespace permora::qt {

// False where the display is another than an X server's; nothing here works then.
bool HasSelections();

enum class SelectionKind { kClipboard, kPrimary };

// One request and its answer, which comes as an event of the user-interface thread.
class SelectionRequest : public QAbstractNativeEventFilter {
  public:
    enum class State { kWaiting, kGiven, kRefused };

    // Requests the selection in a format, such as "text/uri-list". More than `limit` bytes count as a
    // refusal. `whenEnded`, which may be empty, is called when the request has reached its final state.
    SelectionRequest(SelectionKind kind, const QByteArray& form, qsizetype limit,
                     std::function<void()> whenEnded = {});
    ~SelectionRequest() override;
    SelectionRequest(const SelectionRequest&) = delete;
    SelectionRequest& operator=(const SelectionRequest&) = delete;

    State GetState() const { return state; }
    const QByteArray& Bytes() const { return bytes; }
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    // Waits until the answer is there or the owner has been silent for some seconds; the request then goes on
    // waiting. Meanwhile windows are painted, input is kept for afterwards, unless the owner stays silent,
    // and `request` may be replaced.
    static State Await(const std::unique_ptr<SelectionRequest>& request);

  private:
    bool Take(const xcb_selection_notify_event_t& event);
    bool Take(const xcb_property_notify_event_t& event);
    void TakeBytes();
    void End(State newState);

    xcb_connection_t* connection;
    qsizetype limit;
    std::function<void()> whenEnded;
    State state = State::kWaiting;
    bool comesInPieces = false;
    std::uint32_t window = 0;
    std::uint32_t property = 0;
    QByteArray bytes;
    QElapsedTimer sinceLastSign;
};

// What the clipboard's owner offers. Each new owner is asked, without waiting for the answer.
class ClipboardOffer {
  public:
    ClipboardOffer();
    ~ClipboardOffer();
    ClipboardOffer(const ClipboardOffer&) = delete;
    ClipboardOffer& operator=(const ClipboardOffer&) = delete;

    // False until the owner has answered.
    bool Has(const QByteArray& form) const;
    // As SelectionRequest::Await. False: the owner has been silent.
    bool Await() const;

  private:
    void Ask();
    void TakeForms();

    QMetaObject::Connection whenChanged;
    std::unique_ptr<SelectionRequest> request;
    std::vector<std::uint32_t> forms;
    mutable QHash<QByteArray, std::uint32_t> atoms;  // of the forms that were asked about
};

}  // namespace permora::qt
