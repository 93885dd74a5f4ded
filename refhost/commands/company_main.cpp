// The program company: see company_command.hpp.

#include <iostream>

#include "refhost/commands/company_command.hpp"

#ifdef _WIN32

#include <fcntl.h>
#include <io.h>

#include "refhost/objects/utf8.hpp"

int wmain(int count, wchar_t** arguments) {
    // Text is UTF-8 with the line ends that it was written with.
    static_cast<void>(::_setmode(::_fileno(stdout), _O_BINARY));
    static_cast<void>(::_setmode(::_fileno(stderr), _O_BINARY));
    std::vector<std::string> words;
    for (int i = 1; i < count; ++i) {
        words.push_back(paylodge::refhost::Utf8FromWide(arguments[i]));
    }
    return paylodge::refhost::RunCompanyCommand(words, std::cout, std::cerr);
}

#else

int main(int count, char** arguments) {
    return paylodge::refhost::RunCompanyCommand({arguments + 1, arguments + count}, std::cout, std::cerr);
}

#endif
