// Whether a window is served:
//   permora-test-window-answers WINDOW SECONDS LIMIT
// asks it again and again for so long, as window managers do to find out who hangs, and writes the longest
// time that it took to answer, in milliseconds. Fails when that was longer than the limit. Protocol:
// "_NET_WM_PING" in the Extended Window Manager Hints.
#include <poll.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

xcb_atom_t AtomOf(xcb_connection_t* connection, const char* name) {
    auto* reply = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr);
    const xcb_atom_t atom = reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return atom;
}

// Waits for the answer that carries `number`, until `end`.
bool AwaitAnswer(xcb_connection_t* connection, xcb_atom_t ping, std::uint32_t number, Clock::time_point end) {
    for (;;) {
        while (auto* event = xcb_poll_for_event(connection)) {
            const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event);
            const bool isAnswer = (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE &&
                                  message->data.data32[0] == ping && message->data.data32[1] == number;
            std::free(event);
            if (isAnswer) return true;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        if (left.count() <= 0) return false;
        pollfd input{xcb_get_file_descriptor(connection), POLLIN, 0};
        poll(&input, 1, static_cast<int>(left.count()));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return EXIT_FAILURE;
    const auto window = static_cast<xcb_window_t>(std::strtoul(argv[1], nullptr, 0));
    const auto end = Clock::now() + std::chrono::milliseconds(std::atoi(argv[2]) * 1000);
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) != 0) return EXIT_FAILURE;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const std::uint32_t answersArrive = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &answersArrive);
    const xcb_atom_t ping = AtomOf(connection, "_NET_WM_PING");
    const xcb_atom_t protocols = AtomOf(connection, "WM_PROTOCOLS");

    long long longest = 0;
    for (std::uint32_t number = 1; Clock::now() < end; ++number) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = protocols;
        message.data.data32[0] = ping;
        message.data.data32[1] = number;
        message.data.data32[2] = window;
        const Clock::time_point start = Clock::now();
        xcb_send_event(connection, 0, window, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(connection);
        constexpr std::chrono::seconds kLongest{30};
        AwaitAnswer(connection, ping, number, start + kLongest);
        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
        longest = std::max<long long>(longest, took.count());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    xcb_disconnect(connection);
    std::printf("%lld\n", longest);
    return longest <= std::atoll(argv[3]) ? EXIT_SUCCESS : EXIT_FAILURE;
}
