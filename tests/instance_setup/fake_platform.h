// SPDX-License-Identifier: MIT
// A platform for tests of the instance set-up and of the message handling: it writes down what it is asked for, can
// fail on request, and hands out messages that a test has prepared.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct FakePlatformState {
    std::vector<std::string> Calls;        // what was asked for, in order
    std::string Failing;                   // name of the operation that fails, or empty
    unsigned FormatId = 49152;             // what RegisterFormat answers
    int RegistryAnswer = 0;                // what ReadRegistryWord answers
    std::uint32_t RegistryValue = 0;       // and the value it gives
    std::vector<unsigned> Messages;        // queue of message ids; 18 is the quit message
    std::vector<unsigned> DialogMessages;  // messages that reach the main window while the About box is open
};

extern FakePlatformState Fake;
