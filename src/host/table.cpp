#include "pelion_core/host/table.h"

#include <algorithm>
#include <boost/locale/encoding_utf.hpp>

namespace pelion_core::host {
namespace detail {
namespace {

namespace conv = boost::locale::conv;

std::string quoted(const std::string& name) { return '"' + name + '"'; }

const char* nameOf(Kind kind) {
  constexpr std::pair<Kind, const char*> names[] = {
      {Kind::numbers, "floating numbers"}, {Kind::integers, "integers"},
      {Kind::booleans, "booleans"},        {Kind::instants, "time points"},
      {Kind::durations, "durations"},      {Kind::texts, "strings"}};
  return std::find_if(std::begin(names), std::end(names),
                      [&](const auto& each) { return each.first == kind; })
      ->second;
}

std::size_t lengthOf(const Column& column) {
  return std::visit([](const auto& values) { return values.size(); }, column.values);
}

// A list of strings crosses as one string, each with a zero behind it, which Python splits: making
// a thousand objects there is one call instead of a thousand. Texts that have zeros cross one by
// one.
Owned makeTexts(const StringArray& texts) {
  std::u16string joined;
  std::vector<std::size_t> missing;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (texts[i].isMissing()) {
      missing.push_back(i);
    } else {
      joined += texts[i].text();
    }
    joined += u'\0';
  }
  const auto zeros = static_cast<std::size_t>(std::count(joined.begin(), joined.end(), u'\0'));
  const Owned all = zeros == texts.size() ? makeUtf16(joined) : toPython(texts.texts());
  return callHelper(Helper::splitTexts, {all, toPython(missing)});
}

StringArray readTexts(PyObject* array, std::vector<std::size_t> shape) {
  const std::vector<Owned> parts = readItems(callHelper(Helper::joinTexts, {array}));
  std::vector<Text> texts(fromPython<std::size_t>(parts[1]));
  if (isNone(parts[0])) {
    auto text = texts.begin();
    eachFromPython<std::u16string>(parts[3], [&](std::u16string each) { *text++ = each; });
  } else {
    const std::u16string joined = readUtf16(parts[0]);
    std::size_t start = 0;
    for (Text& each : texts) {
      const std::size_t end = joined.find(u'\0', start);
      each = joined.substr(start, end - start);
      start = end + 1;
    }
  }
  eachFromPython<std::size_t>(parts[2], [&](std::size_t position) { texts[position] = Text(); });
  return StringArray(std::move(texts), std::move(shape));
}

template <class T>
Owned viewOf(const std::vector<T>& values) {
  return makeView(values.data(), values.size() * sizeof(T));
}
Owned viewOf(const StringArray& texts) { return makeTexts(texts); }

// As helpers.cpp takes it: (name, NumPy's type, values, mask).
Owned describe(const Column& column) {
  std::string type(1, static_cast<char>(column.kind));
  if (column.kind == Kind::instants || column.kind == Kind::durations) type += "8[us]";
  const Owned values = std::visit([](const auto& stored) { return viewOf(stored); }, column.values);
  return makeTuple(std::initializer_list<PyObject*>{toPython(column.name), toPython(type), values,
                                                    viewOf(column.mask)});
}

// And gives it back: (name, NumPy's type, block or list of strings, block of the mask or None).
Column columnOf(PyObject* description) {
  const std::vector<Owned> parts = readItems(description);
  const auto kind = static_cast<Kind>(fromPython<std::string>(parts[1])[0]);
  Column column{fromPython<std::string>(parts[0]), kind, {}, {}};
  if (kind == Kind::texts) {
    column.values = readTexts(parts[2], {fromPython<std::size_t>(parts[3])});
    return column;
  }
  const Storage storage = storageOf(parts[2]);
  if (kind == Kind::numbers) {
    column.values = copied<double>(storage);
  } else if (kind == Kind::booleans) {
    column.values = copied<std::uint8_t>(storage);
  } else {
    column.values = copied<std::int64_t>(storage);
  }
  if (!isNone(parts[3])) column.mask = copied<std::uint8_t>(storageOf(parts[3]));
  return column;
}

}  // namespace

void wrongKind(const Column& column, Kind wanted) {
  throw std::invalid_argument("column " + quoted(column.name) + " holds " + nameOf(column.kind) +
                              ", not " + nameOf(wanted));
}

void hasMissing(const Column& column) {
  throw std::invalid_argument("column " + quoted(column.name) +
                              " has missing values: read elements of std::optional");
}

void columnOverflow(const std::string& column, const std::string& type) {
  throw std::overflow_error(type + " of column " + quoted(column) + " does not fit");
}

std::string utf8Of(const std::u16string& text) { return conv::utf_to_utf<char>(text); }

std::u16string utf16Of(std::string_view text) {
  try {
    return conv::utf_to_utf<char16_t>(text.data(), text.data() + text.size(), conv::stop);
  } catch (const conv::conversion_error&) {
    throw std::invalid_argument("a text is not UTF-8: " +
                                quoted(conv::utf_to_utf<char>(std::string(text))));
  }
}

}  // namespace detail

Table& Table::add(const std::string& name, StringArray texts) {
  return append({name, detail::Kind::texts, std::move(texts), {}});
}

Table& Table::append(detail::Column column) {
  if (has(column.name)) {
    throw std::invalid_argument("the table has a column " + detail::quoted(column.name) +
                                " already");
  }
  const std::size_t length = detail::lengthOf(column);
  if (!columns_.empty() && length != rows()) {
    throw std::invalid_argument("column " + detail::quoted(column.name) + " has " +
                                std::to_string(length) + " rows, the table " +
                                std::to_string(rows()));
  }
  columns_.push_back(std::move(column));
  return *this;
}

std::size_t Table::rows() const { return columns_.empty() ? 0 : detail::lengthOf(columns_[0]); }

std::vector<std::string> Table::names() const {
  std::vector<std::string> all;
  for (const detail::Column& column : columns_) all.push_back(column.name);
  return all;
}

bool Table::has(const std::string& name) const {
  return std::any_of(columns_.begin(), columns_.end(),
                     [&](const detail::Column& column) { return column.name == name; });
}

const detail::Column& Table::find(const std::string& name) const {
  for (const detail::Column& column : columns_) {
    if (column.name == name) return column;
  }
  std::string all;
  for (const detail::Column& column : columns_) all += ' ' + detail::quoted(column.name);
  throw std::out_of_range("the table has no column " + detail::quoted(name) + ", but" +
                          (all.empty() ? " none" : all));
}

const StringArray& Table::texts(const std::string& name) const {
  const detail::Column& column = find(name);
  if (column.kind != detail::Kind::texts) detail::wrongKind(column, detail::Kind::texts);
  return std::get<StringArray>(column.values);
}

Object Table::toPandas() const {
  return detail::perform([&] {
    std::vector<detail::Owned> descriptions;
    for (const detail::Column& column : columns_) descriptions.push_back(detail::describe(column));
    return Object(detail::callHelper(detail::Helper::frame, {detail::makeTuple(descriptions)}));
  });
}

Table Table::fromPandas(const Object& frame) {
  return detail::perform([&] {
    Table table;
    const detail::Owned columns =
        detail::callHelper(detail::Helper::columns, {detail::borrowed(frame)});
    for (PyObject* const each : detail::readItems(columns)) table.append(detail::columnOf(each));
    return table;
  });
}

detail::Owned Converter<StringArray>::toPython(const StringArray& texts) {
  return detail::callHelper(
      detail::Helper::textArray,
      {detail::makeTexts(texts), detail::makeTuple(detail::eachToPython(texts.dims()))});
}

StringArray Converter<StringArray>::fromPython(PyObject* object) {
  const std::vector<detail::Owned> parts =
      detail::readItems(detail::callHelper(detail::Helper::textsOf, {object}));
  return detail::readTexts(parts[0], detail::fromPython<std::vector<std::size_t>>(parts[1]));
}

}  // namespace pelion_core::host
