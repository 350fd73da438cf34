#include <doctest.h>

#include "platform/com/registration.h"
#include "platform/text.h"

TEST_CASE("the command line names what the server is to do") {
    struct Row {
        const wchar_t* arguments;
        ServerCommand command;
    };
    const Row rows[] = {
        {L"/RegServer", ServerCommand::Register},
        {L"-RegServer", ServerCommand::Register},
        {L"/regserver", ServerCommand::Register},
        {L"-REGSERVER", ServerCommand::Register},
        {L"/UnregServer", ServerCommand::Unregister},
        {L"-unRegServer", ServerCommand::Unregister},
        {L"/Embedding", ServerCommand::Run},
        {L"-Embedding", ServerCommand::Run},
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
    for (const Row& row : rows) {
        CAPTURE(ToAnsi(row.arguments));
        CHECK(ParseServerCommand(row.arguments) == row.command);
    }
}
