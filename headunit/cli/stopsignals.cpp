#include "headunit/cli/stopsignals.h"

#include <atomic>
#include <cstdlib>
#include <iterator>

namespace headunit {

namespace {

std::atomic<int> receivedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may only write what needs no lock");

extern "C" void onStopSignal(int number)
{
    receivedSignal.store(number);
}

} // namespace

StopSignals::StopSignals()
{
    static_assert(std::size(numbers) == std::size(decltype(before_){}), "one place a signal");
    receivedSignal.store(0);
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(numbers); ++i) {
        sigaction(numbers[i], nullptr, &before_[i]);
        if (numbers[i] != SIGHUP || before_[i].sa_handler != SIG_IGN)
            sigaction(numbers[i], &action, nullptr);
    }
}

StopSignals::~StopSignals()
{
    for (std::size_t i = 0; i < std::size(numbers); ++i)
        sigaction(numbers[i], &before_[i], nullptr);
}

int StopSignals::received()
{
    return receivedSignal.load();
}

void StopSignals::dieBy(int number)
{
    std::signal(number, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, number);
    sigprocmask(SIG_UNBLOCK, &only, nullptr);
    std::raise(number);
    std::_Exit(128 + number); // only reached where the signal can't end a process
}

} // namespace headunit
