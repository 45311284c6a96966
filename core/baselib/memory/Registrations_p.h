// Registrations: a list of registered objects, the newest first, that may change while it is visited.
#pragma once

#include "core/baselib/heap/AddressIndex_p.h"

namespace corvix::memory {

template <class T>
class Registrations {
 public:
  struct Node {
    T* object;
    Node* next;
    Node* previous;
    Node* sameBucket;
  };

  Node* first() const noexcept { return first_; }
  u32 count() const noexcept { return count_; }

  void push(Node* node, T* object) noexcept {
    *node = {object, first_, nullptr, nullptr};
    if (first_) first_->previous = node;
    first_ = node;
    byObject_.enter(node);
    ++count_;
  }

  // Takes the newest entry of the object out; null if there is none. The node still holds the object.
  Node* unlink(const T* object) noexcept {
    Node* const node = byObject_.find(object);
    if (!node) return nullptr;
    byObject_.leave(node);
    for (Visit* visit = visits_; visit; visit = visit->outer) {
      if (visit->next == node) visit->next = node->next;
    }
    (node->previous ? node->previous->next : first_) = node->next;
    if (node->next) node->next->previous = node->previous;
    --count_;
    return node;
  }

  // What is registered meanwhile is not visited, what is unregistered before its turn neither.
  template <class Call>
  void forEach(Call call) {
    Visit visit(*this);
    while (Node* const node = visit.next) {
      visit.next = node->next;
      call(node->object);
    }
  }

 private:
  struct Visit {
    explicit Visit(Registrations& all) noexcept : list(all), next(all.first_), outer(all.visits_) {
      list.visits_ = this;
    }
    ~Visit() { list.visits_ = outer; }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    Registrations& list;
    Node* next;
    Visit* outer;
  };

  Node* first_ = nullptr;
  u32 count_ = 0;
  AddressIndex<Node, &Node::object> byObject_;
  Visit* visits_ = nullptr;  // under way, the innermost first
};

}  // namespace corvix::memory
