#include "service/say.h"

#include <iostream>

#include "polling/text.h"

namespace fieldline::service {

void Say(const std::string& text) { std::cerr << "fieldlined: " + ForTerminal(text) + '\n' << std::flush; }

}  // namespace fieldline::service
