// A driver that ends the process in one way for each of its commands. Behind "Later:" it does so on a thread of its own,
// some time after the command has returned. Where DEADLY_WHEN_LOADED is set, it ends the process at once; where
// DEADLY_IN_INITIALIZE is, it becomes another program that succeeds. Where DEADLY_WAITS_IN_INITIALIZE names a file, it makes
// that and waits for a signal.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/TestModule.h"

namespace {

[[maybe_unused]] volatile int s_zero = 0;
[[maybe_unused]] volatile int s_seven = 7;
int* volatile s_null = nullptr;

// The sanitizers would end the process before the processor does.
__attribute__((no_sanitize("undefined"))) void Segv() {
  *s_null = 1;
}
__attribute__((no_sanitize("undefined"))) void Fpe() {
#if defined(__x86_64__) || defined(__i386__)
  s_seven = s_seven / s_zero;
#else
  ::raise(SIGFPE);
#endif
}

// Not a loop: each call needs what the next one returns.
int Deeper(volatile char* outer, int depth) {
  volatile char room[4096];
  room[0] = outer[0];
  return depth < 0 ? 0 : Deeper(room, depth + 1) + room[0];
}

void BecomeTrue() {
  ::execl("/bin/true", "true", static_cast<char*>(nullptr));
}

// As a driver that does not ask the C library.
void RawExit() {
  ::syscall(SYS_exit_group, 0);
}

void CloseAll() {
  for (int descriptor = 0; descriptor != 1024; ++descriptor) {
    ::close(descriptor);
  }
}

// The module stays when its driver goes, so its functions are called at the exit. Takes what registering them has returned.
void KeepModule(int) {
  Dl_info module = {};
  ::dladdr(reinterpret_cast<const void*>(&RawExit), &module);
  ::dlopen(module.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// Ends the process when the module is loaded, or when it is unloaded.
struct EndsWithTheModule {
  EndsWithTheModule() {
    if (std::getenv("DEADLY_WHEN_LOADED") != nullptr) {
      ::_exit(0);
    }
  }
  ~EndsWithTheModule() {
    if (armed) {
      ::_exit(0);
    }
  }
  bool armed = false;
};
EndsWithTheModule s_endsWithTheModule;

class Deadly : public H7BaseAgentDriver {
 public:
  explicit Deadly(IInstanceManager& instanceManager) : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single) {}

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    if (std::getenv("DEADLY_IN_INITIALIZE") != nullptr) {
      BecomeTrue();
    }
    const char* const waits = std::getenv("DEADLY_WAITS_IN_INITIALIZE");
    if (waits != nullptr) {
      ::close(::open(waits, O_WRONLY | O_CREAT, 0600));
      ::pause();
    }
    return H7BaseAgentDriver::Initialize(driverId, config, persisted);
  }

  void RegisterCommands() override {
    Register("Segv", &Segv);
    Register("Fpe", &Fpe);
    Register("Bus", [] { ::raise(SIGBUS); });
    Register("Ill", [] { ::raise(SIGILL); });
    Register("Abort", [] { std::abort(); });
    Register("Exit", [] { std::exit(0); });
    Register("ExitWithSeven", [] { std::exit(7); });
    Register("QuickExit", [] { std::quick_exit(0); });
    Register("UnderscoreExit", [] { ::_exit(0); });
    Register("UnderscoreBigExit", [] { std::_Exit(0); });
    Register("ExitWhenUnloaded", [] { s_endsWithTheModule.armed = true; });
    Register("Exec", &BecomeTrue);
    Register("RawExit", &RawExit);
    Register("ExitAtExit", [] { KeepModule(std::atexit(&RawExit)); });
    Register("UnderscoreExitAtExit", [] { KeepModule(std::atexit([] { ::_exit(0); })); });
    Register("EndThread", [] { ::pthread_exit(nullptr); });
    Register("CancelThread", [] {
      ::pthread_cancel(::pthread_self());
      ::pthread_testcancel();
    });
    Register("Kill", [] { ::raise(SIGKILL); });
    Register("Alarm", [] { ::raise(SIGALRM); });
    Register("Terminate", [] { ::raise(SIGTERM); });
    Register("Trap", [] { ::raise(SIGTRAP); });
    Register("User", [] { ::raise(SIGUSR1); });
    Register("CloseAllAndSegv", [] {
      CloseAll();
      Segv();
    });
    Register("CloseAllAndExit", [] {
      CloseAll();
      ::_exit(0);
    });
    Register("Recurse", [] {
      volatile char first = 1;
      Deeper(&first, 0);
    });
    Register("Throw", [] { std::thread([] { throw std::runtime_error("not caught"); }).join(); });
    Register("IgnoreAndSegv", [] {
      ::signal(SIGSEGV, SIG_IGN);
      Segv();
    });
    Register("LeaveToTheSystemAndSegv", [] {
      struct sigaction byDefault = {};
      byDefault.sa_handler = SIG_DFL;
      ::sigaction(SIGSEGV, &byDefault, nullptr);
      Segv();
    });
    Register("HandleAndSegv", [] {
      // As libraries do that write a report of their own.
      ::signal(SIGSEGV, [](int signal) {
        ::signal(signal, SIG_DFL);
        ::raise(signal);
      });
      Segv();
    });
    Register("CloseOutputsAndSegv", [] {
      for (const int output : {STDOUT_FILENO, STDERR_FILENO}) {
        ::close(output);
        static_cast<void>(::open("/dev/null", O_WRONLY) == output);
      }
      Segv();
    });
    Register("Daemon", [] { static_cast<void>(::daemon(1, 1)); });
    Register("ForkAndReturn", [] {
      const pid_t child = ::fork();
      if (child > 0) {
        ::waitpid(child, nullptr, 0);
      }
    });
    Register("GoOnInAChild", [] {
      const pid_t child = ::fork();
      if (child > 0) {
        ::waitpid(child, nullptr, 0);
        ::_exit(0);
      }
    });
    Register("ForkAndExit", [] {
      if (::fork() == 0) {
        ::_exit(0);
      }
    });
  }

 private:
  using Reply = h7::auto_com<H7XML::INode>;

  void Register(const std::string& name, const std::function<void()>& action) {
    GetUICmdDispatcher().RegisterUICmd(name, [action](ICmdMessage const&) {
      action();
      return Reply();
    });
    GetUICmdDispatcher().RegisterUICmd("Later:" + name, [action](ICmdMessage const&) {
      std::thread([action] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        action();
      }).detach();
      return Reply();
    });
  }
};

}  // namespace

TEST_MODULE(Deadly);
