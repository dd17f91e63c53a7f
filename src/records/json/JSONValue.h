// One node of a parsed settings document. The settings kept in the database (parameter
// settings, raw-sample settings, message settings, the service's own settings) are short JSON
// texts; they are read through this tree over wide strings.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

class JSONValue;

// Elements and members are owned by the value that holds them.
using JSONArray = std::vector<std::unique_ptr<JSONValue>>;
using JSONObject = std::map<std::wstring, std::unique_ptr<JSONValue>>;

// The numbers are those of the payload's alternative, in this order.
enum class JSONType : int { Null = 0, String = 1, Bool = 2, Number = 3, Array = 4, Object = 5 };

class JSONValue {
public:
  // Deepest nesting of arrays and objects that a document may have: a settings text is a few
  // levels deep, and a document built to be deeper must not exhaust the stack.
  static constexpr std::size_t kMaxDepth = 512;

  // Parses one value starting at *data (no leading whitespace) and advances *data past it.
  // Returns null, with nothing left allocated, when the text is not a value; *data then points
  // somewhere inside the text.
  static std::unique_ptr<JSONValue> Parse(const wchar_t** data);

  JSONValue(); // Null
  explicit JSONValue(const wchar_t* text);
  explicit JSONValue(std::wstring text);
  explicit JSONValue(bool value);
  explicit JSONValue(double value);
  explicit JSONValue(int value); // stored as a Number
  explicit JSONValue(JSONArray elements);
  explicit JSONValue(JSONObject members);

  // Copies the whole subtree.
  JSONValue(const JSONValue& other);
  JSONValue& operator=(const JSONValue& other);
  JSONValue(JSONValue&& other) noexcept;
  JSONValue& operator=(JSONValue&& other) noexcept;
  ~JSONValue();

  JSONType Type() const { return static_cast<JSONType>(payload.index()); }
  bool IsNull() const { return Type() == JSONType::Null; }
  bool IsString() const { return Type() == JSONType::String; }
  bool IsBool() const { return Type() == JSONType::Bool; }
  bool IsNumber() const { return Type() == JSONType::Number; }
  bool IsArray() const { return Type() == JSONType::Array; }
  bool IsObject() const { return Type() == JSONType::Object; }

  // The payload. Callers test the type first; a value of another type reads as empty: the
  // empty string, false, NaN (a number without a value), the empty array or object.
  const std::wstring& AsString() const;
  bool AsBool() const;
  double AsNumber() const;
  const JSONArray& AsArray() const;
  const JSONObject& AsObject() const;

  // Number of elements of an array or members of an object; 0 for the other types.
  std::size_t CountChildren() const;
  // True for an array with an element at index.
  bool HasChild(std::size_t index) const;
  // The array element at index; null for another type or an index out of range.
  const JSONValue* Child(std::size_t index) const;
  // True for an object with the key.
  bool HasChild(const std::wstring& name) const;
  // The object's member under the key; null for another type or a missing key.
  const JSONValue* Child(const std::wstring& name) const;
  // The keys of an object in map order (wide-character comparison); empty for other types.
  std::vector<std::wstring> ObjectKeys() const;

  // The value as JSON text. Numbers print with 15 significant digits, infinities and NaN as
  // null, "/" as "\/". With pretty, containers open and close on their own lines, indented
  // by two blanks per level; elements stay on one line, separated by "," alone.
  std::wstring Stringify(bool pretty = false) const;

private:
  static std::unique_ptr<JSONValue> Parse(const wchar_t** data, std::size_t depth);
  static std::unique_ptr<JSONValue> ParseNumber(const wchar_t** data);
  static std::unique_ptr<JSONValue> ParseArray(const wchar_t** data, std::size_t depth);
  static std::unique_ptr<JSONValue> ParseObject(const wchar_t** data, std::size_t depth);
  static std::wstring StringifyString(const std::wstring& text);
  static std::wstring Indent(std::size_t depth);
  // depth 0 prints without layout; from 1 on, the level of a pretty print.
  std::wstring StringifyAt(std::size_t depth) const;

  std::variant<std::monostate, std::wstring, bool, double, JSONArray, JSONObject> payload;
};
