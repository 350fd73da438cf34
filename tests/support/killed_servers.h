// COM servers that were killed.
#pragma once

// COM itself notices that a server has ended. Wine's does not, and would send every later client to the dead
// one: there its service is stopped and started again.
void ForgetKilledServers();
