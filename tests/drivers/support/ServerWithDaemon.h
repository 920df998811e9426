#ifndef TESTS_DRIVERS_SUPPORT_SERVER_WITH_DAEMON_H
#define TESTS_DRIVERS_SUPPORT_SERVER_WITH_DAEMON_H

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "drivers/localsnmpd/PortReservation.h"
#include "tests/drivers/support/SshServer.h"

// A server whose account has the commands that a controller has, as a script named "control", and a daemon behind them.
struct ServerWithDaemon {
  ServerWithDaemon() : server(WithPrograms()) {
    programs.Write("control", "#!/bin/sh\ncd '" + Folder() + "' || exit 1\n" + kWaitForPid + kControl);
    EXPECT_EQ(0, ::chmod(programs.Path("control").c_str(), 0755));
    server.Files().Write("port", std::to_string(port.GetPort()));
    server.GiveFiles();
  }

  SshServer::Options WithPrograms() const {
    SshServer::Options options;
    options.path = programs.Path() + ":";
    return options;
  }
  std::string Folder() const {
    std::string quoted;
    for (const char character : server.Files().Path()) {
      quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quoted;
  }

  // The foreground of the daemon ends before the process id is written: a command that came between would see no daemon.
  static constexpr char kWaitForPid[] =
      "wait_for_pid() { n=0; until [ -s pid ] || [ $((n += 1)) -gt 1000 ]; do sleep 0.01; done; }\n";
  static constexpr char kControl[] =
      "echo \"$1\" >>calls\n"
      "[ ! -e broken ] || exit 1\n"
      "stop() { [ ! -e pid ] || { kill \"$(cat pid)\"; while [ -e pid ]; do sleep 0.01; done; }; }\n"
      "start() {\n"
      "  [ -e pid ] || SNMP_PERSISTENT_DIR=$PWD/p SNMPCONFPATH=$PWD/p snmpd -LF w snmpd.log -C -c snmpd.conf -m '' -M '' -I "
      "-smux -r "
      "\\\n"
      "    -p \"$PWD/pid\" \"udp:127.0.0.1:$(cat port)\" && wait_for_pid\n"
      "}\n"
      "case $1 in\n"
      "start) start ;;\n"
      "stop) stop ;;\n"
      "restart) [ ! -e pid ] || { stop; start; } ;;\n"
      "reboot)\n"
      "  session=$PPID\n"
      "  [ \"$(cat \"/proc/$session/comm\")\" = sshd ] || session=$(cut -d ' ' -f 4 \"/proc/$session/stat\")\n"
      "  kill -9 \"$session\" ;;\n"
      "esac\n";

  // A number that the system gives to no other program, as it may one of a TCP port.
  const drivers::PortReservation port;
  TemporaryFolder programs;
  SshServer server;
};

#endif
