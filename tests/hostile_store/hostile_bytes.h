// What no setting of ours ever held, and what comes near to one.
#pragma once

#include <string>
#include <vector>

const std::vector<std::string>& HostileBytes();
