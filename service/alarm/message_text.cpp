#include "service/alarm/message_text.h"

#include <utility>

namespace fieldline::service {
namespace {

constexpr std::pair<std::string_view, std::string_view> kReplacements[] = {
    {"°",  ""   }, // 28 °C is 28 C
    {"Ä",  "Ae" },
    {"Ö",  "Oe" },
    {"Ü",  "Ue" },
    {"ä",  "ae" },
    {"ö",  "oe" },
    {"ü",  "ue" },
    {"ß",  "ss" },
    {"à",  "a"  },
    {"á",  "a"  },
    {"â",  "a"  },
    {"å",  "a"  },
    {"ç",  "c"  },
    {"è",  "e"  },
    {"é",  "e"  },
    {"ê",  "e"  },
    {"ì",  "i"  },
    {"í",  "i"  },
    {"ñ",  "n"  },
    {"ò",  "o"  },
    {"ó",  "o"  },
    {"ô",  "o"  },
    {"ø",  "o"  },
    {"ù",  "u"  },
    {"ú",  "u"  },
    {"Ω",  "Ohm"},
    {"µ",  "u"  },
    {"²",  "2"  },
    {"³",  "3"  },
    {"–", "-"  },
    {"—", "-"  },
    {"’", "'"  },
    {"`",   "'"  }, // not in the GSM alphabet
};

// These take two places of an SMS.
constexpr std::string_view kDouble = "^{}\\[]~|";

std::size_t Width(char c) { return kDouble.find(c) == std::string_view::npos ? 1 : 2; }

// Removes the first character, all its bytes.
void DropCharacter(std::string_view& text) {
  text.remove_prefix(1);
  while (!text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0) == 0x80) text.remove_prefix(1);
}

}  // namespace

std::string FillText(std::string_view text, const TextValues& values) {
  const std::pair<std::string_view, const std::string&> placeholders[] = {
      {"{unit}",     values.unit    },
      {"{alarm}",    values.alarm   },
      {"{severity}", values.severity},
      {"{device}",   values.device  },
      {"{value}",    values.value   },
      {"{since}",    values.since   },
  };
  std::string filled;
  while (!text.empty()) {
    std::size_t taken = 0;
    for (const auto& [name, value] : placeholders) {
      if (!text.starts_with(name)) continue;
      filled += value;
      taken = name.size();
    }
    if (taken == 0) {
      filled += text.front();
      taken = 1;
    }
    text.remove_prefix(taken);
  }
  return filled;
}

std::string ToBoardText(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const std::pair<std::string_view, std::string_view>* found = nullptr;
    for (const auto& replacement : kReplacements) {
      if (text.starts_with(replacement.first)) found = &replacement;
    }
    if (found != nullptr) {
      plain += found->second;
      text.remove_prefix(found->first.size());
      continue;
    }
    const char c = text.front();
    if (c == '\n' || c == '\t') {
      plain += ' ';
    } else {
      plain += c >= ' ' && c <= '~' ? c : '?';
    }
    DropCharacter(text);
  }
  return plain;
}

std::string CutToSms(std::string text) {
  constexpr std::size_t kMost = 160;
  constexpr std::string_view kMore = "...";
  std::size_t width = 0;
  std::size_t kept = 0;  // bytes that leave room for kMore
  for (std::size_t i = 0; i < text.size(); ++i) {
    width += Width(text[i]);
    if (width <= kMost - kMore.size()) kept = i + 1;
    if (width > kMost) return text.substr(0, kept).append(kMore);
  }
  return text;
}

}  // namespace fieldline::service
