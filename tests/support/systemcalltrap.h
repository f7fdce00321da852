#pragma once

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

// A trap for every system call of one thread, whoever makes it: logging, sleeping and waiting end in one,
// also where no library function that could be replaced stands in between. A seccomp filter sends the calls
// of the thread to a signal handler, which tells of them and then makes them: the thread goes on as if
// nothing had been, so it may also do ordinary work in between and end like any other. Other threads are
// free, but for those that the trapped one might start.
//
// What it doesn't see: a clock that is read without entering the kernel, and spinning in a thread's own loop.

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
/// The sanitizer's runtime makes calls of its own on every thread, and has its own alternate signal stack.
constexpr bool systemCallsAreTrapped = false;
#else
constexpr bool systemCallsAreTrapped = true;
#endif

/// Called on the trapped thread, in a signal handler.
using SystemCallHandler = void (*)(long number);

// The way around the filter: it lets through what comes from this one instruction.
#if defined(__x86_64__)
// clang-format off
asm(".text\n"
    ".hidden untrappedSystemCall\n.hidden untrappedSystemCallEnd\n"
    ".globl untrappedSystemCall\n.globl untrappedSystemCallEnd\n"
    ".type untrappedSystemCall, @function\n"
    "untrappedSystemCall:\n"
    "  mov %rdi, %rax\n  mov %rsi, %rdi\n  mov %rdx, %rsi\n  mov %rcx, %rdx\n"
    "  mov %r8, %r10\n  mov %r9, %r8\n  mov 8(%rsp), %r9\n"
    "  syscall\n"
    "untrappedSystemCallEnd:\n"
    "  ret\n"
    ".size untrappedSystemCall, . - untrappedSystemCall\n");
// clang-format on
constexpr uint32_t ownArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
// clang-format off
asm(".text\n"
    ".hidden untrappedSystemCall\n.hidden untrappedSystemCallEnd\n"
    ".globl untrappedSystemCall\n.globl untrappedSystemCallEnd\n"
    ".type untrappedSystemCall, %function\n"
    "untrappedSystemCall:\n"
    "  mov x8, x0\n  mov x0, x1\n  mov x1, x2\n  mov x2, x3\n  mov x3, x4\n  mov x4, x5\n  mov x5, x6\n"
    "  svc #0\n"
    "untrappedSystemCallEnd:\n"
    "  ret\n"
    ".size untrappedSystemCall, . - untrappedSystemCall\n");
// clang-format on
constexpr uint32_t ownArchitecture = AUDIT_ARCH_AARCH64;
#else
#error "no trap for system calls on this architecture"
#endif

extern "C" long untrappedSystemCall(long number, long, long, long, long, long, long);
extern "C" const char untrappedSystemCallEnd[];

namespace systemcalls {

inline SystemCallHandler handler = nullptr;

/// The registers that a system call was made with.
struct Registers
{
    long argument[6];
    long* result;
};

inline Registers registersOf(ucontext_t* context)
{
#if defined(__x86_64__)
    auto* r = context->uc_mcontext.gregs;
    return {{long(r[REG_RDI]), long(r[REG_RSI]), long(r[REG_RDX]), long(r[REG_R10]), long(r[REG_R8]),
             long(r[REG_R9])},
            reinterpret_cast<long*>(&r[REG_RAX])};
#else
    auto* r = context->uc_mcontext.regs;
    return {{long(r[0]), long(r[1]), long(r[2]), long(r[3]), long(r[4]), long(r[5])},
            reinterpret_cast<long*>(&r[0])};
#endif
}

/// The thread's mask while the handler runs is not the one that the call is about, and a blocked SIGSYS would
/// end the process: the mask is changed in what the handler returns to, and SIGSYS stays out of it.
inline long changeSignalMask(ucontext_t* context, long how, const uint64_t* set, uint64_t* before)
{
    uint64_t mask;
    __builtin_memcpy(&mask, &context->uc_sigmask, sizeof mask);
    if (before)
        *before = mask;
    if (!set)
        return 0;
    switch (how) {
    case SIG_BLOCK:
        mask |= *set;
        break;
    case SIG_UNBLOCK:
        mask &= ~*set;
        break;
    default:
        mask = *set;
        break;
    }
    mask &= ~(uint64_t(1) << (SIGSYS - 1));
    __builtin_memcpy(&context->uc_sigmask, &mask, sizeof mask);
    return 0;
}

inline void onCall(int, siginfo_t* info, void* where)
{
    auto* const context = static_cast<ucontext_t*>(where);
    const long number = info->si_syscall;
    handler(number);
    const Registers r = registersOf(context);
    switch (number) {
    case SYS_rt_sigprocmask:
        *r.result = changeSignalMask(context, r.argument[0], reinterpret_cast<uint64_t*>(r.argument[1]),
                                     reinterpret_cast<uint64_t*>(r.argument[2]));
        break;
    case SYS_clone:
    case SYS_clone3:
        *r.result = -EPERM; // a new thread can't begin in the middle of a handler
        break;
    default:
        *r.result = untrappedSystemCall(number, r.argument[0], r.argument[1], r.argument[2], r.argument[3],
                                        r.argument[4], r.argument[5]);
        break;
    }
}

/// Traps the system calls of the calling thread from now on until it ends. Returns false with errno set where
/// the kernel refuses; without a trap in this build (`systemCallsAreTrapped`) it does nothing.
inline bool trapOnThisThread(SystemCallHandler onSystemCall)
{
    if (!systemCallsAreTrapped)
        return true;
    handler = onSystemCall;
    // A stack of its own: a thread that ends gives its stack back while it still stands on it.
    alignas(64) static thread_local char stack[64 * 1024];
    stack_t alternate = {};
    alternate.ss_sp = stack;
    alternate.ss_size = sizeof stack;
    struct sigaction action = {};
    action.sa_sigaction = onCall;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    if (sigaltstack(&alternate, nullptr) || sigaction(SIGSYS, &action, nullptr))
        return false;

    const auto passed = reinterpret_cast<uintptr_t>(untrappedSystemCallEnd);
    // clang-format off
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, ownArchitecture, 0, 8),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_rt_sigreturn, 7, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit, 6, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 5, 0),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, instruction_pointer)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, uint32_t(passed), 0, 2),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, instruction_pointer) + 4),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, uint32_t(passed >> 32), 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    // clang-format on
    const sock_fprog filter = {std::size(program), program};
    return !prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) && !prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
}

} // namespace systemcalls
