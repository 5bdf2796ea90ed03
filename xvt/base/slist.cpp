/// String lists. An element knows its own place, so that a bare element pointer is enough to go on from.
#include <list>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>

#include "xvt/base/report.h"
#include "xvt/xvt.h"

struct xvt_string_list_element {
  std::string text;
  long data;
  SLIST owner;
  std::list<xvt_string_list_element>::iterator place;
};

struct xvt_string_list {
  std::list<xvt_string_list_element> elements;
};

namespace {

/// The lists that are alive: a call with one that was destroyed is caught instead of followed.
std::unordered_map<SLIST, std::unique_ptr<xvt_string_list>>& lists() {
  static std::unordered_map<SLIST, std::unique_ptr<xvt_string_list>> alive;
  return alive;
}

bool isAlive(SLIST list, const char* function) {
  if (lists().contains(list)) return true;
  xvt::report(function, list == nullptr ? "no list" : "the list is dead");
  return false;
}

bool isMember(SLIST list, SLIST_ELT element, const char* function) {
  if (!isAlive(list, function)) return false;
  if (element != nullptr && element->owner == list) return true;
  xvt::report(function, element == nullptr ? "no element" : "the element is of another list");
  return false;
}

}  // namespace

SLIST xvt_slist_create() {
  try {
    auto list = std::make_unique<xvt_string_list>();
    SLIST handle = list.get();
    lists().emplace(handle, std::move(list));
    return handle;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void xvt_slist_destroy(SLIST list) {
  if (list != nullptr && isAlive(list, "xvt_slist_destroy")) lists().erase(list);
}

bool xvt_slist_add(SLIST list, SLIST_ELT where, const char* text, long data) {
  if (!isAlive(list, "xvt_slist_add")) return false;
  if (where != nullptr && !isMember(list, where, "xvt_slist_add")) return false;
  if (text == nullptr) {
    xvt::report("xvt_slist_add", "no text");
    return false;
  }
  try {
    const auto before = where != nullptr ? where->place : list->elements.end();
    const auto added = list->elements.insert(before, xvt_string_list_element{text, data, list, {}});
    added->place = added;
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

int xvt_slist_count(SLIST list) {
  return isAlive(list, "xvt_slist_count") ? static_cast<int>(list->elements.size()) : 0;
}

SLIST_ELT xvt_slist_get_first(SLIST list) {
  if (!isAlive(list, "xvt_slist_get_first") || list->elements.empty()) return nullptr;
  return &list->elements.front();
}

SLIST_ELT xvt_slist_get_next(SLIST list, SLIST_ELT element) {
  if (!isMember(list, element, "xvt_slist_get_next")) return nullptr;
  const auto next = std::next(element->place);
  return next != list->elements.end() ? &*next : nullptr;
}

const char* xvt_slist_get_text(SLIST list, SLIST_ELT element) {
  return isMember(list, element, "xvt_slist_get_text") ? element->text.c_str() : "";
}

long xvt_slist_get_data(SLIST list, SLIST_ELT element) {
  return isMember(list, element, "xvt_slist_get_data") ? element->data : 0;
}
