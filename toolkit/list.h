// tk::list<T>: a doubly linked list of values addressed by item handles that stay valid
// until their own item is deleted. Built on std::list; each node knows its own position
// so that succ, pred and del_item take constant time.
#pragma once

#include <list>

#include "toolkit/error.h"

namespace tk {

// An item handle; nullptr is the nil item.
typedef void* list_item;

template <class T>
class list {
  struct node;
  typedef std::list<node> node_list;
  struct node {
    T value;
    typename node_list::iterator self;
    explicit node(const T& v) : value(v) {}
  };

 public:
  typedef int (*compare_function)(const T&, const T&);

  list() {}
  list(const list& other) { for (const node& n : other.nodes) append(n.value); }
  list& operator=(const list& other) {
    if (this != &other) {
      clear();
      for (const node& n : other.nodes) append(n.value);
    }
    return *this;
  }

  int size() const { return static_cast<int>(nodes.size()); }
  int length() const { return size(); }
  bool empty() const { return nodes.empty(); }

  list_item append(const T& x) { return place(nodes.end(), x); }
  list_item push(const T& x) { return place(nodes.begin(), x); }
  list_item push_back(const T& x) { return append(x); }
  list_item push_front(const T& x) { return push(x); }

  T pop() {
    if (nodes.empty()) {
      error_handler(1, "dlist::pop on empty list.");
      return T();
    }
    T v = nodes.front().value;
    nodes.pop_front();
    return v;
  }
  T pop_back() {
    if (nodes.empty()) {
      error_handler(1, "dlist::pop_back on empty list.");
      return T();
    }
    T v = nodes.back().value;
    nodes.pop_back();
    return v;
  }

  const T& head() const {
    if (nodes.empty()) error_handler(1, "dlist::head(): empty list");
    return nodes.front().value;
  }
  const T& tail() const {
    if (nodes.empty()) error_handler(1, "dlist::tail(): empty list");
    return nodes.back().value;
  }

  list_item first() const { return nodes.empty() ? nullptr : handle(nodes.front()); }
  list_item last() const { return nodes.empty() ? nullptr : handle(nodes.back()); }
  list_item succ(list_item it) const {
    if (!it) return nullptr;
    typename node_list::iterator next = std::next(as_node(it)->self);
    return next == nodes_end() ? nullptr : handle(*next);
  }
  list_item pred(list_item it) const {
    if (!it) return nullptr;
    typename node_list::iterator here = as_node(it)->self;
    if (here == nodes_begin()) return nullptr;
    return handle(*std::prev(here));
  }

  T& operator[](list_item it) { return as_node(it)->value; }
  const T& operator[](list_item it) const { return as_node(it)->value; }
  T& inf(list_item it) { return as_node(it)->value; }
  const T& inf(list_item it) const { return as_node(it)->value; }

  list_item get_item(int i) const {
    if (i < 0 || i >= size()) {
      error_handler(1, "dlist::get_item: index out of range");
      return nullptr;
    }
    typename node_list::const_iterator p = nodes.begin();
    std::advance(p, i);
    return handle(*p);
  }

  // 1-based position of the first item equal to x, 0 if none.
  int rank(const T& x) const {
    int r = 1;
    for (const node& n : nodes) {
      if (n.value == x) return r;
      ++r;
    }
    return 0;
  }

  void remove(const T& x) {
    nodes.remove_if([&x](const node& n) { return n.value == x; });
  }

  T del_item(list_item it) {
    if (!it) {
      error_handler(999, "dlist: delete nil-item");
      return T();
    }
    node* n = as_node(it);
    T v = n->value;
    nodes.erase(n->self);
    return v;
  }

  // Inserts x behind (dir 0) or in front of (dir 1) the item.
  list_item insert(const T& x, list_item it, int dir = 0) {
    if (dir != 0 && dir != 1) {
      error_handler(1, "dlist::insert: illegal dir argument.");
      return nullptr;
    }
    typename node_list::iterator here = as_node(it)->self;
    return place(dir == 0 ? std::next(here) : here, x);
  }

  // Moves all items of other to the tail (dir 0) or the head (dir 1); other is left empty.
  void conc(list& other, int dir = 0) {
    if (&other == this) return;
    nodes.splice(dir == 0 ? nodes.end() : nodes.begin(), other.nodes);
  }

  void move_to_front(list_item it) {
    if (!it) {
      error_handler(1, "dlist::move_to_front: nil argument");
      return;
    }
    nodes.splice(nodes.begin(), nodes, as_node(it)->self);
  }
  void move_to_back(list_item it) {
    if (!it) {
      error_handler(1, "dlist::move_to_back: nil argument");
      return;
    }
    nodes.splice(nodes.end(), nodes, as_node(it)->self);
  }

  // Sorts by a three-way comparison (-1, 0, 1); equal items keep their order.
  void sort(compare_function cmp) {
    nodes.sort([cmp](const node& a, const node& b) { return cmp(a.value, b.value) < 0; });
  }
  template <class Compare>
  void sort_by(Compare cmp) {
    nodes.sort([&cmp](const node& a, const node& b) { return cmp(a.value, b.value) < 0; });
  }

  // Destroys all items, in list order.
  void clear() {
    while (!nodes.empty()) nodes.pop_front();
  }

  ~list() { clear(); }

  // Range access to the values, head to tail.
  class iterator {
   public:
    explicit iterator(typename node_list::iterator p) : pos(p) {}
    T& operator*() const { return pos->value; }
    T* operator->() const { return &pos->value; }
    iterator& operator++() {
      ++pos;
      return *this;
    }
    bool operator!=(const iterator& o) const { return pos != o.pos; }
    bool operator==(const iterator& o) const { return pos == o.pos; }

   private:
    typename node_list::iterator pos;
  };
  class const_iterator {
   public:
    explicit const_iterator(typename node_list::const_iterator p) : pos(p) {}
    const T& operator*() const { return pos->value; }
    const T* operator->() const { return &pos->value; }
    const_iterator& operator++() {
      ++pos;
      return *this;
    }
    bool operator!=(const const_iterator& o) const { return pos != o.pos; }
    bool operator==(const const_iterator& o) const { return pos == o.pos; }

   private:
    typename node_list::const_iterator pos;
  };
  iterator begin() { return iterator(nodes.begin()); }
  iterator end() { return iterator(nodes.end()); }
  const_iterator begin() const { return const_iterator(nodes.begin()); }
  const_iterator end() const { return const_iterator(nodes.end()); }

 private:
  list_item place(typename node_list::iterator where, const T& x) {
    typename node_list::iterator p = nodes.emplace(where, x);
    p->self = p;
    return handle(*p);
  }
  static list_item handle(const node& n) { return const_cast<node*>(&n); }
  static node* as_node(list_item it) { return static_cast<node*>(it); }
  typename node_list::iterator nodes_end() const { return const_cast<node_list&>(nodes).end(); }
  typename node_list::iterator nodes_begin() const { return const_cast<node_list&>(nodes).begin(); }

  node_list nodes;
};

}  // namespace tk

// Walks the items of a list from head to tail. The successor is fetched before the body
// runs, so the body may delete the current item (but not its successor).
#define TK_FORALL_ITEMS(it, L)                                                       \
  for (::tk::list_item it = (L).first(), it##_next_ = (it ? (L).succ(it) : nullptr); \
       it != nullptr; it = it##_next_, it##_next_ = (it ? (L).succ(it) : nullptr))
