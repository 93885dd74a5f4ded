// Opens the company file that is named on the command line, sets the named event, and waits to be killed.

#include <windows.h>

#include "com/owner.hpp"
#include "refhost/books/company.hpp"
#include "refhost/objects/utf8.hpp"

int wmain(int count, wchar_t** arguments) {
    if (count != 3) {
        return 2;
    }
    const auto company = paylodge::refhost::Company::Open(paylodge::refhost::Utf8FromWide(arguments[1]));
    const paylodge::Handle locked(::OpenEventW(EVENT_MODIFY_STATE, FALSE, arguments[2]));
    if (!locked || !::SetEvent(locked.Get())) {
        return 3;
    }
    ::Sleep(60'000);
    return 0;
}
