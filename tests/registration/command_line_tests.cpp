#include <doctest.h>

#include "platform/com/registration.h"
#include "platform/text.h"

TEST_CASE("the command line names what the server is to do") {
    const std::pair<std::wstring, ServerCommand> rows[] = {
        {L"/RegServer", ServerCommand::Register},
        {L"-REGserver", ServerCommand::Register},
        {L"/UnregServer", ServerCommand::Unregister},
        {L"-unRegServer", ServerCommand::Unregister},
        {L"/Embedding", ServerCommand::Run},
        {L" \t-embedding  ", ServerCommand::Run},
        {L"-Embedding /RegServer", ServerCommand::Run},
        {L"something /UnregServer", ServerCommand::Unregister},
        {L"", ServerCommand::None},
        {L"   ", ServerCommand::None},
        {L"/", ServerCommand::None},
        {L"RegServer", ServerCommand::None},
        {L"--RegServer", ServerCommand::None},
        {L"/RegServerPerUser", ServerCommand::None},
        {L"/Register", ServerCommand::None},
        {L"\\RegServer", ServerCommand::None},
    };
    for (const auto& [arguments, command] : rows) {
        CAPTURE(ToAnsi(arguments));
        CHECK(ParseServerCommand(arguments) == command);
    }
}
