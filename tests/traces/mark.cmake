# Read by ctest. A folder in /tmp, since tests that become another user have to reach it.
if(NOT DEFINED ENV{AGENT_TEST_RUN})
  string(RANDOM LENGTH 12 name)
  set(ENV{AGENT_TEST_RUN} "/tmp/snmp-agent-tests-${name}")
  set(ENV{TMPDIR} "$ENV{AGENT_TEST_RUN}")
endif()
