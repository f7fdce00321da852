#pragma once

#include <csignal>

namespace headunit {

/// Takes SIGINT, SIGTERM and SIGHUP while work without an event loop is under way, so that the work can look
/// whether it is to stop and clear up behind itself. However often they come: a terminal and a script both
/// pass them on. SIGHUP is left ignored where it is (nohup). One at a time. Thread: GUI.
class StopSignals
{
public:
    StopSignals();
    /// The signals do again what they did before.
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// The last one that came since one of these objects was made; 0 for none. From any thread.
    static int received();
    /// Ends the process by this signal, as if it had not been taken: a shell that runs a script ends the
    /// script on Ctrl-C only when it sees that.
    [[noreturn]] static void dieBy(int number);

private:
    static constexpr int numbers[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction before_[3] = {};
};

} // namespace headunit
