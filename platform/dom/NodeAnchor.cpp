#include "platform/dom/NodeAnchor.h"

#include "platform/dom/DomStorage.h"

namespace ZYMDom {

NodeAnchor::NodeAnchor(DomStorage& storage, pugi::xml_node node) : storage_(&storage), node_(node) {
  storage.Anchors().Add(*this);
}

NodeAnchor::~NodeAnchor() { Leave(); }

void NodeAnchor::MoveTo(DomStorage& storage, pugi::xml_node node) {
  Leave();
  storage_ = &storage;
  node_ = node;
  storage.Anchors().Add(*this);
}

void NodeAnchor::Leave() {
  storage_->Anchors().Remove(*this);
  if (storage_->Anchors().Size() == 0) {
    delete storage_;
  }
}

}  // namespace ZYMDom
