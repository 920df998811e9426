#ifndef DRIVERS_COMMON_KEEPING_DEVICE_DRIVER_H
#define DRIVERS_COMMON_KEEPING_DEVICE_DRIVER_H

#include <functional>
#include <optional>
#include <string>

#include "drivers/common/DeviceState.h"
#include "drivers/common/SnmpDeviceDriver.h"

namespace drivers {

// A driver whose controller can be off line, and whose settings and texts survive the host.
//
// Off line, the last text that is known is handed out, and a new one is accepted for later (drivers/common/OffLineStatus.h).
// When the controller is back, the text that waits is installed, unless somebody changed the file meanwhile. A life that
// only looks does not install it (MayInstallOnRead). How the controller is reached is the derived driver's matter.
class KeepingDeviceDriver : public SnmpDeviceDriver {
 public:
  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) final;
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) final;

 protected:
  // Replaces the file with `text` where it still holds `expected`. Returns a status.
  using Replace = std::function<int(const std::string& expected, const std::string& text)>;

  // `kind` is the name of the state's element.
  KeepingDeviceDriver(IInstanceManager& instanceManager, const char* kind);

  // Restores what the last life kept. The last step of a successful Prepare.
  void TakeStateBack();

  bool IsOnline() const { return m_state.online; }
  bool IsPending() const { return m_state.pending.has_value(); }
  // Notes whether the controller can be reached. On line nothing may be pending.
  void SetOnline(bool online);
  // Whether the file was replaced and the daemon has not been told since. The mark survives the host.
  bool IsRestartDue() const { return m_state.isRestartDue; }
  // Notes that the daemon serves what the file holds, or that there is none to be told.
  void NoteRestarted();

  // Whether a text that waits may be installed when the file is merely read: the host keeps this life's state, or the text
  // was accepted in this life. Neither is so where somebody only looks at the device: installing would change the
  // controller, and at each look again, since nobody would remember that it is done.
  bool MayInstallOnRead() const { return m_isKept || m_acceptedForLater; }

  // Notes what was read from the file.
  void NoteRead(const std::string& text);
  // Notes what `text`, which was read from the file with that path, says about the text that waits, and logs it: it is in
  // the file already, and a restart is due; it is dropped, because somebody changed the file; or it goes on waiting. Called
  // before NoteRead, and only while one is pending.
  void NoteReadWhilePending(const std::string& text, const std::string& path);
  // Does the work of ReadFile off line: -9 and the text that waits, or else the last one that is known; -21 when there is
  // none.
  int ReadOffLine(std::string& config);
  // Whether `config` may be written: 0, kFileWasChanged when this life has not copied anything out, or kTextTooLarge.
  int CheckWrite(const std::string& config) const;
  // Does the work of WriteFile on line, without a message. A text that waited is superseded where the new one is installed,
  // and dropped where somebody changed the file. A restart is due from before the file is replaced until NoteRestarted.
  // Called only after CheckWrite.
  int WriteOnLine(const std::string& config, const Replace& replace);
  // Does the work of WriteFile off line: keeps the text for later and returns -9. Called only after CheckWrite.
  int WriteOffLine(const std::string& config);
  // Installs the text that waits, and logs what became of it, with the file's `path`, unless the controller is still off
  // line. Returns 0 when it is in the file, kFileWasChanged when it was dropped because somebody changed the file, or the
  // reason for which it still waits. Called only while one is pending.
  int InstallPending(const std::string& path, const Replace& replace);
  // What is said when a text that waited was dropped.
  static std::string DescribeDropped(const std::string& path);
  // The text that was read or written last. Called only when there is one.
  const std::string& KnownText() const { return *m_state.known; }

  void SettingsChanged() override;

 private:
  // What the file has to hold for a text that was made from what was copied out last.
  const std::string& Base() const;
  int ReplaceWith(const std::string& config, const std::string& expected, const Replace& replace);

  const char* const m_kind;
  // The saved state from the host, until it is taken back. With an invalid configuration it is returned as it is.
  h7::auto_com<H7XML::INode> m_handedState;
  // Its settings are only set for saving: the base holds those in use.
  DeviceState m_state;
  bool m_tookStateBack = false;
  bool m_copiedOut = false;         // in this life
  bool m_gavePending = false;       // the last text that was copied out was the one that waits
  bool m_acceptedForLater = false;  // in this life
  bool m_isKept = false;            // the host has asked for the state of this life
  bool m_saidWaiting = false;       // in this life
  bool m_saidStateChanged = false;  // and the host has not asked for the state since
};

}  // namespace drivers

#endif
