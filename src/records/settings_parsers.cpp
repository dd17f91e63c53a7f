#include "records/settings_parsers.h"

#include <iostream>
#include <memory>

#include "records/json/JSON.h"

namespace {

// Settings texts are ASCII: a byte becomes the wide character of its signed value, so a
// byte of 0x80 or above becomes a negative character, which the JSON reader refuses.
std::wstring widen(const std::string& text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (const char c : text) {
    wide += static_cast<wchar_t>(static_cast<signed char>(c));
  }
  return wide;
}

std::string narrow(const std::wstring& text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (const wchar_t c : text) {
    bytes += static_cast<char>(c);
  }
  return bytes;
}

// The document of a settings text, or null after the reader's failure line on standard output.
std::unique_ptr<JSONValue> readDocument(const std::string& text, const char* failure) {
  std::unique_ptr<JSONValue> root = JSON::Parse(widen(text).c_str());
  if (!root) {
    std::cout << failure;
  }
  return root;
}

// A number that the truncation toward zero cannot hold (infinity from an overlong
// exponent) carries no usable id or setting.
bool truncatesToInt(double value) {
  return value > -2147483649.0 && value < 2147483648.0;
}

bool truncatesToLong(double value) {
  return value >= -9223372036854775808.0 && value < 9223372036854775808.0;
}

// The text of one key of a PARAM_SETTINGS object: from three characters after the colon
// (colon, blank, opening quote) up to the "," after the key, less the closing quote. With no
// "," after the colon the text runs to the end of the object.
void readQuoted(const std::string& object, const std::string& key, std::string& field) {
  const std::size_t p = object.find(key);
  if (p == std::string::npos) {
    return;
  }
  const std::size_t c = object.find(':', p);
  std::size_t m = object.find(',', p);
  if (m == std::string::npos || m < c) {
    m = object.size();
  }
  field = object.substr(c + 3, m - c - 4);
}

} // namespace

std::vector<param_setting> parse_param_settings(std::string text) {
  const std::string s = std::move(text);
  std::vector<param_setting> settings;
  // Shorter than "[]": nothing to read, and the loop bound below would wrap.
  if (s.size() < 2) {
    return settings;
  }

  // Two cursors walk the text: each round takes the next "{" after the previous one and
  // the next "}" after the previous one. The texts in the field were written to this scanner,
  // so its positional reading is kept as it is, with its failures: the unsigned arithmetic
  // and the throwing substr and stod below are part of it.
  std::size_t start = 0;
  std::size_t end = 0;
  while (s.size() - 2 > end) {
    start = s.find('{', start + 1);
    end = s.find('}', end + 1);
    const std::string o = s.substr(start, end - start);

    param_setting setting;
    readQuoted(o, "\"name_param\"", setting.name);
    readQuoted(o, "\"sub_1_packet\"", setting.sub_1_packet);

    // The value starts two characters after the colon (colon and one blank) and ends at the
    // next ","; without a "value" key both positions are npos and the text wraps to o from 1.
    std::size_t c = std::string::npos;
    std::size_t m = std::string::npos;
    const std::size_t q = o.find("\"value\"");
    if (q != std::string::npos) {
      c = o.find(':', q);
      m = o.find(',', q);
    }
    const std::string value = o.substr(c + 2, m - c - 2);
    setting.value = (value != "null" && !value.empty()) ? std::stod(value) : 0.0;

    settings.push_back(setting);
  }
  return settings;
}

std::map<std::string, double> json_parse_settings_raw(std::string text) {
  std::map<std::string, double> values;
  const std::unique_ptr<JSONValue> root = readDocument(text, "failed to parse settings raw\n");
  if (!root) {
    return values;
  }
  // A root or element of another type reads as empty.
  for (const auto& element : root->AsArray()) {
    if (!element) {
      continue;
    }
    const JSONValue* name = element->Child(L"name_param");
    if (name == nullptr || !name->IsString()) {
      continue;
    }
    const std::string key = narrow(name->AsString());
    if (key.empty()) {
      continue;
    }
    const JSONValue* value = element->Child(L"value");
    if (value != nullptr && value->IsNumber()) {
      values[key] = value->AsNumber();
    }
  }
  return values;
}

std::map<std::string, std::vector<int>> json_parse_message_settings(std::string text,
                                                                    std::string situation) {
  std::map<std::string, std::vector<int>> codes;
  const std::unique_ptr<JSONValue> root = readDocument(text, "failed to parse message settings\n");
  if (!root) {
    return codes;
  }
  const JSONValue* messages = root->Child(widen(situation));
  if (messages == nullptr || !messages->IsArray()) {
    return codes;
  }
  for (const auto& message : messages->AsArray()) {
    if (!message) {
      continue;
    }
    const JSONValue* code = message->Child(L"codeMessage");
    if (code == nullptr || !code->IsString()) {
      continue;
    }
    std::vector<int> recommendations;
    const JSONValue* ids = message->Child(L"recommendations");
    if (ids != nullptr) {
      for (const auto& id : ids->AsArray()) {
        if (id && id->IsNumber() && truncatesToInt(id->AsNumber())) {
          recommendations.push_back(static_cast<int>(id->AsNumber()));
        }
      }
    }
    codes[narrow(code->AsString())] = recommendations;
  }
  return codes;
}

void json_parse_vek_settings(std::string text, std::map<std::string, std::vector<long>>& numbers,
                             std::map<std::string, std::string>& texts,
                             std::map<std::string, bool>& flags) {
  static const char kFailure[] = "failed to parse vek settings\n";
  const std::unique_ptr<JSONValue> root = readDocument(text, kFailure);
  if (!root) {
    return;
  }
  if (!root->IsObject()) {
    std::cout << kFailure;
    return;
  }
  for (const auto& [wide_key, value] : root->AsObject()) {
    if (!value) {
      continue;
    }
    const std::string key = narrow(wide_key);
    switch (value->Type()) {
    case JSONType::Number:
      if (truncatesToLong(value->AsNumber())) {
        numbers[key] = {static_cast<long>(value->AsNumber())};
      }
      break;
    case JSONType::Bool:
      flags[key] = value->AsBool();
      break;
    case JSONType::String:
      texts[key] = narrow(value->AsString());
      break;
    case JSONType::Array: {
      // An empty array gives an empty vector; the reader of the settings keeps its field then.
      std::vector<long> list;
      for (const auto& element : value->AsArray()) {
        if (element && element->IsNumber() && truncatesToLong(element->AsNumber())) {
          list.push_back(static_cast<long>(element->AsNumber()));
        }
      }
      numbers[key] = list;
      break;
    }
    case JSONType::Null:
    case JSONType::Object:
      break;
    }
  }
}
