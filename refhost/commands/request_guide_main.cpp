// Prints docs/requests.md.

#include <iostream>

#include "refhost/books/request_guide.hpp"

int main() { std::cout << paylodge::refhost::RequestGuide(); }
