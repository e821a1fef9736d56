// SPDX-License-Identifier: Apache-2.0
#include "Kor/Registration.h"

#include "Kor/Assert.h"
#include "Kor/IntrospectionReactor.h"

#include <string>

namespace Kor {
namespace {

// The attribute that holds the key in the members of a collection: the one named `key`, otherwise
// the first constructor argument.
KorAttr::Ptr keyAttrOf(KorType const* member) {
  KorAttr::Ptr keyAttr = KorAttr::attr(member, "key");
  if (!keyAttr && !member->constructorArgs().empty()) {
    keyAttr = KorAttr::attr(member, member->constructorArgs().front().name.view());
  }
  KOR_ASSERT(keyAttr);
  return keyAttr;
}

KorAttr::Ptr define(KorType* type, AttrModel const& model, AttributeId id) {
  Name const name(model.name);
  KorType const* const valueType = model.valueType();
  switch (model.kind) {
  case AttrModel::Kind::data:
    return defNoninstantiatingAttr(type, name, valueType, nullptr, model.flags, model.introspection,
                                   id);
  case AttrModel::Kind::collection:
    return defNoninstantiatingAttr(type, name, valueType, model.keyType(), model.flags,
                                   model.introspection, id);
  case AttrModel::Kind::owned:
    KorAttr::attrDel(type, model.name);
    return KorAttr::attrIs(type, name, valueType, keyAttrOf(valueType), nullptr, model.flags, id);
  case AttrModel::Kind::function:
    // A function without arguments replaces the inherited one in its place.
    if (model.args.count != 0) {
      KorAttr::attrDel(type, model.name);
    }
    return KorAttr::attrIs(type, name, valueType, nullptr, nullptr, model.flags, id);
  }
  KOR_ASSERT(false);
  return nullptr;
}

// The number of an inherited attribute of that name, otherwise the next free one of the type.
AttributeId numberOf(KorType const* type, AttrModel const& model, AttributeId& own) {
  if (model.withoutNumber) {
    return 0;
  }
  KorAttr const* const inherited = type->attr(model.name);
  return inherited != nullptr ? inherited->id() : firstAttributeId(type->level()) + own++;
}

std::string_view proseOf(KorType const* type, AttrModel const& model) {
  KorAttr const* const inherited = type->attr(model.name);
  return model.prose.empty() && inherited != nullptr ? inherited->prose() : model.prose;
}

void registerAttr(KorType* type, AttrModel const& model, AttributeId& own) {
  IntrospectionReactor& reactor = IntrospectionReactor::global();
  std::string_view const prose = proseOf(type, model);  // define() replaces the inherited one
  KorAttr::Ptr const attr = define(type, model, numberOf(type, model, own));
  attr->proseIs(prose);
  attr->accessIs(model.access);
  attr->readerIs(model.reader);
  attr->writerIs(model.writer);
  if (model.caller != nullptr) {
    attr->callerIs(model.caller);
  }
  attr->isWritableIs(model.writable);
  if (model.kind == AttrModel::Kind::data || model.kind == AttrModel::Kind::collection) {
    return;  // has announced itself
  }
  attr->introspectionFlagsIs(model.introspection);
  for (std::size_t i = 0; i < model.args.count; ++i) {
    attr->newArg(Name(model.args.names[i]), Name(model.args.types[i]()->name()));
  }
  reactor.handleAttr(attr);
  reactor.handleAttrContextExit();
}

void registerType(TypeModel const& model) {
  IntrospectionReactor& reactor = IntrospectionReactor::global();
  KorType* const type = model.type();
  reactor.handleType(type, type->base());
  type->sizeIs(model.size);
  if (model.kind == TypeModel::Kind::entity) {
    type->isEntityIs(true);
  } else if (model.kind == TypeModel::Kind::value) {
    type->isValueIs(true);
  }
  type->hasGenericIfSupportIs(true);
  for (std::size_t i = 0; i < model.constructorArgs.count; ++i) {
    type->newConstructorArg(Name(model.constructorArgs.names[i]),
                            Name(model.constructorArgs.types[i]()->name()));
  }
  type->operationsAre(model.operations);
  type->attrsInherited();
  for (KorAttr::Ptr const& attr : type->attrs()) {
    reactor.handleAttr(attr);
    reactor.handleAttrContextExit();
  }
  AttributeId own = 0;
  for (AttrModel const& attr : model.attrs) {
    registerAttr(type, attr, own);
  }
  reactor.handleScopeExit();
}

}  // namespace

KorAttr::Ptr defNoninstantiatingAttr(KorType* owner, Name name, KorType const* valueType,
                                     KorType const* keyType, KorAttr::AttrFlags flags,
                                     KorAttr::KorAttrIntrospectionFlags introspection,
                                     AttributeId id) {
  KorAttr::Ptr attr(new KorAttr(owner, std::move(name), valueType, flags, id));
  attr->keyType_ = keyType;
  attr->introspection_ = introspection;
  owner->attrIs(attr);
  IntrospectionReactor& reactor = IntrospectionReactor::global();
  reactor.handleAttr(attr);
  reactor.handleAttrContextExit();
  return attr;
}

void registerTypes(std::string_view nameSpace, std::span<TypeModel const* const> types) {
  IntrospectionReactor& reactor = IntrospectionReactor::global();
  reactor.handleNameSpace(Name(nameSpace));
  for (TypeModel const* const model : types) {
    registerType(*model);
  }
  reactor.handleScopeExit();
}

void enterTypes(std::span<TypeModel const* const> types) {
  for (TypeModel const* const model : types) {
    KorType::typeNodeIs(model->type(), model->type()->name());
  }
}

}  // namespace Kor
