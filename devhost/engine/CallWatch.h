#ifndef DEVHOST_ENGINE_CALL_WATCH_H
#define DEVHOST_ENGINE_CALL_WATCH_H

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "devhost/driver/DriverEntry.h"
#include "devhost/engine/EndNote.h"

class ISNMPConfigurationAgent;
class ISupportSNMP;

namespace devhost {

class HostCore;
class LoadedDriver;

// Knows the calls that drivers make into each other without the host: an agent into the devices, a device into the agent. So
// what comes out of such a call is blamed on the driver that was called, a call from a second thread on the one that made
// it, and a device that its driver leaves with the agent is withdrawn before the agent can call it.
//
// It sees the calls through fronts (CallFronts.h): drivers get the front of an agent, and agents and drivers that
// ask for them get those of devices. A front lives as long as the watch, so that nobody holds one that has gone.
class CallWatch {
 public:
  // `core` outlives it.
  explicit CallWatch(HostCore& core) : m_core(core) {}
  CallWatch(const CallWatch&) = delete;
  CallWatch& operator=(const CallWatch&) = delete;

  // What agents get of a device's file goes through it, unless it is empty; see Host::EditCopies.
  std::function<int(unsigned long driverId, int status, std::string& text)> editCopies;

  // The driver has published this instance, and lives; or it has withdrawn what it had published.
  void NotePublished(const LoadedDriver& driver, const std::string& iid, void* instance);
  void NoteUnpublished(const LoadedDriver& driver, const std::string& iid, void* instance);
  // Returns what a driver gets that asks for this published instance: its front, or the instance itself where it is the
  // driver's own or nobody watches it.
  void* Shown(const LoadedDriver& driver, const std::string& iid, void* instance);
  // The agent takes this device in, because the code at `caller` has called it, or forgets it. Returns what the agent gets:
  // the front of the device, or `device` itself where that is null or nobody knows whose it is.
  ISupportSNMP* NoteAnnounced(ISNMPConfigurationAgent& agent, unsigned long deviceId, ISupportSNMP* device,
                              const void* caller) noexcept;
  void NoteWithdrawn(ISNMPConfigurationAgent& agent, unsigned long deviceId) noexcept;
  // The driver has been destroyed. Reports the devices that it has left with an agent, and withdraws them.
  void NoteDestroyed(const LoadedDriver& driver);

  // Whether a call into the agent comes from the thread of the host, and while the agent is there. Otherwise it is reported
  // and must not go on. It is the work of the driver whose code `caller` is. Where that is nobody's, because a driver's last
  // act was a jump, or the code of several, it is the driver of the device that the call is about.
  bool Allows(ISNMPConfigurationAgent& agent, const char* operation, unsigned long deviceId, const void* caller) noexcept;

  // The id of the driver whose instance it is; 0 when nobody knows.
  unsigned long OwnersId(const void* instance) const;

  // Where the exception that is being handled came from; nothing when it came out of no call between drivers.
  struct Origin {
    DriverEntry driver;
    std::string operation;
    const void* exception;
  };
  std::optional<Origin> OriginOfException() const;
  // The host calls a driver: what came out of earlier calls is over.
  void ForgetException() noexcept { m_origin.reset(); }

 private:
  friend class WatchedCall;

  // A device, by the agent that has taken it in and its id there.
  using Announced = std::pair<ISNMPConfigurationAgent*, unsigned long>;
  struct Device {
    const LoadedDriver* driver = nullptr;  // whose it is; null when nobody knows
    const void* instance = nullptr;
  };
  // Whose an instance is, from the first to the last time that the driver publishes or announces it. After that, somebody
  // else's may come to lie at its address.
  struct Owner {
    const LoadedDriver* driver;
    std::size_t claims;
  };

  struct Agent {
    const LoadedDriver* driver = nullptr;  // that has published it last; null when it has been destroyed
    // The interface has no destructor of its own for a front to be destroyed by, so the pointer is shared.
    std::shared_ptr<ISNMPConfigurationAgent> front;
  };

  // The mutex is held around these three. What belongs to one driver stays its own when another one claims it.
  void Claim(const void* instance, const LoadedDriver& driver);
  void GiveUp(const void* instance, const LoadedDriver* driver) noexcept;
  ISupportSNMP* FrontOf(ISupportSNMP& device);
  const LoadedDriver* OwnerOf(const void* instance) const;
  bool IsGone(const ISNMPConfigurationAgent& agent) const;
  const LoadedDriver* DriverOf(const Announced& announced) const;
  const LoadedDriver* FindOwner(const Announced& announced, const void* device, const void* caller) const;
  // Returns the devices that the driver has left with an agent that stays.
  std::vector<Announced> Forget(const LoadedDriver& driver);

  HostCore& m_core;
  // A second thread reads the tables while the host's changes them. No driver is called while this is held.
  mutable std::mutex m_mutex;
  std::unordered_map<const void*, Owner> m_owners;  // by the instance that is watched
  // By what they stand for. What comes to lie at the same address later gets the same front.
  std::unordered_map<const void*, std::shared_ptr<ISupportSNMP>> m_devices;
  std::unordered_map<const void*, Agent> m_agents;
  std::map<Announced, Device> m_announced;
  std::optional<Origin> m_origin;  // of the last exception that came out of a watched call
};

// A call of one driver into another one that is under way, for as long as the scope lives. A call from a thread that is not
// the host's is a driver's own business, and so is a driver's call to itself: nothing is noted of these.
class WatchedCall {
 public:
  // `instance` is the interface that is called, `operation` one of its operations.
  WatchedCall(CallWatch& watch, const void* instance, const char* operation) noexcept;
  ~WatchedCall();
  WatchedCall(const WatchedCall&) = delete;
  WatchedCall& operator=(const WatchedCall&) = delete;

  // The exception that is being handled comes out of the call.
  void NoteException() noexcept;
  // The call has returned a status that is not 0.
  void NoteStatus(int status) noexcept;

 private:
  CallWatch* m_watch = nullptr;  // null: nothing is noted
  const LoadedDriver* m_driver = nullptr;
  const char* const m_operation;
  std::optional<EndNote> m_note;
};

}  // namespace devhost

#endif
