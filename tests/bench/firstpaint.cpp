// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Measures how long a program takes from its start until its window has been painted: the time of
// the first drawing into a window, as the display itself reports it. Prints milliseconds, ends the
// program and needs nothing from it, so that any program can be measured in the same way.

#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kLimit = std::chrono::seconds(20);
/// Smaller drawings are those of helper windows; both sides in pixels.
constexpr int kSmallestWindow = 100;

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
using Event = std::unique_ptr<xcb_generic_event_t, Free>;

/// Asks the display to report each drawing on the screen. @return the number of those reports
std::uint8_t reportDrawings(xcb_connection_t *display)
{
    const xcb_query_extension_reply_t *const damage =
        xcb_get_extension_data(display, &xcb_damage_id);
    if (damage == nullptr || damage->present == 0) {
        std::fputs("the display has no DAMAGE extension\n", stderr);
        std::exit(2);
    }
    const Event version(reinterpret_cast<xcb_generic_event_t *>(xcb_damage_query_version_reply(
        display,
        xcb_damage_query_version(display, XCB_DAMAGE_MAJOR_VERSION, XCB_DAMAGE_MINOR_VERSION),
        nullptr)));
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
    xcb_damage_create(display, xcb_generate_id(display), root,
                      XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    // The whole screen counts as drawn at first; that report is not of a program's.
    std::free(xcb_get_input_focus_reply(display, xcb_get_input_focus(display), nullptr));
    while (const Event event{xcb_poll_for_event(display)}) {}
    return static_cast<std::uint8_t>(damage->first_event + XCB_DAMAGE_NOTIFY);
}

bool waitForDrawing(xcb_connection_t *display, std::uint8_t drawing, Clock::time_point end)
{
    pollfd input{xcb_get_file_descriptor(display), POLLIN, 0};
    while (Clock::now() < end) {
        while (const Event event{xcb_poll_for_event(display)}) {
            if ((event->response_type & 0x7f) != drawing) {
                continue;
            }
            const auto *const damage =
                reinterpret_cast<const xcb_damage_notify_event_t *>(event.get());
            if (damage->area.width >= kSmallestWindow && damage->area.height >= kSmallestWindow) {
                return true;
            }
        }
        constexpr int kPollMs = 100;
        poll(&input, 1, kPollMs);
    }
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 2) {
        std::fputs("usage: corvane-bench-firstpaint PROGRAM [ARGUMENT]...\n", stderr);
        return 2;
    }
    xcb_connection_t *const display = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(display) != 0) {
        std::fputs("there is no display\n", stderr);
        return 2;
    }
    const std::uint8_t drawing = reportDrawings(display);

    const auto start = Clock::now();
    pid_t program = 0;
    if (posix_spawnp(&program, argv[1], nullptr, nullptr, argv + 1, environ) != 0) {
        std::perror(argv[1]);
        return 2;
    }
    const bool isPainted = waitForDrawing(display, drawing, start + kLimit);
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
    kill(program, SIGKILL);
    waitpid(program, nullptr, 0);
    xcb_disconnect(display);
    if (!isPainted) {
        std::fputs("no window was painted\n", stderr);
        return 1;
    }
    std::printf("%.2f\n", taken.count());
    return 0;
}
