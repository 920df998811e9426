// Calls the operations that a host offers by their numbers.

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "host/ICmdMessage.h"
#include "host/IDocument.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/INode.h"
#include "host/INodeList.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariable.h"
#include "host/IVariableManager.h"
#include "host/UICmdDispatcher.h"
#include "tests/support/Slots.h"

namespace {

using H7XML::INode;
using H7XML::INodeList;
using testsupport::CallSlot;
using NodeHandle = h7::auto_com<INode>;
using Text = const std::string;

// Records which operation ran last, with its arguments.
class Recorder {
 public:
  std::string Ran() const { return std::exchange(m_ran, ""); }

 protected:
  ~Recorder() = default;
  void Run(const char* name) const { m_ran = name; }
  template <class... Arguments>
  void Run(const char* name, const Arguments&... arguments) const {
    m_ran = name;
    const std::string texts[] = {AsText(arguments)...};
    for (const std::string& text : texts) {
      m_ran += " " + text;
    }
  }

 private:
  static std::string AsText(const std::string& text) { return text; }
  static std::string AsText(const char* text) { return text; }
  static std::string AsText(bool value) { return value ? "true" : "false"; }
  static std::string AsText(int value) { return std::to_string(value); }
  static std::string AsText(unsigned long value) { return std::to_string(value); }

  mutable std::string m_ran;
};

constexpr unsigned long kLargest = 4294967295UL;

class Node final : public INode, public Recorder {
 public:
  void AddRef() const override { Run("AddRef"); }
  void Release() const override { Run("Release"); }
  std::string GetName() const override { return Answer("GetName"); }
  void SetName(Text& name) override { Run("SetName", name); }
  std::string GetValue() const override { return Answer("GetValue"); }
  void SetValue(Text& value) override { Run("SetValue", value); }
  unsigned long GetValueULong() const override { return Run("GetValueULong"), kLargest; }
  std::string GetNamedString(const char* name) const override { return Answer("GetNamedString", name); }
  unsigned long GetNamedULong(const char* name) const override { return Run("GetNamedULong", name), kLargest; }
  bool GetNamedBool(const char* name) const override { return Run("GetNamedBool", name), true; }
  void SetNamedString(const char* name, Text& value) override { Run("SetNamedString", name, value); }
  void SetNamedULong(const char* name, unsigned long value) override { Run("SetNamedULong", name, value); }
  void AddChildString(const char* name, Text& value) override { Run("AddChildString", name, value); }
  void AddChildInt(const char* name, int value) override { Run("AddChildInt", name, value); }
  std::string GetChildString(const char* name) const override { return Answer("GetChildString", name); }
  unsigned long GetChildULong(const char* name) const override { return Run("GetChildULong", name), kLargest; }
  bool GetChildBool(const char* name) const override { return Run("GetChildBool", name), true; }
  NodeHandle GetChild(const char* name) const override { return Run("GetChild", name), NodeHandle(); }
  h7::auto_com<INodeList> GetChildren() const override { return Run("GetChildren"), h7::auto_com<INodeList>(); }
  void AppendChild(INode& child) override { Run(&child == this ? "AppendChild itself" : "AppendChild another"); }

 private:
  template <class... Arguments>
  std::string Answer(const char* name, const Arguments&... arguments) const {
    Run(name, arguments...);
    return std::string("answer of ") + name;
  }
};

TEST(TheSlotsOfANode, RunItsCountNameAndValue) {
  const Node node;
  const void* const view = static_cast<const INode*>(&node);
  CallSlot<void()>(view, 0);
  EXPECT_EQ(node.Ran(), "AddRef");
  CallSlot<void()>(view, 1);
  EXPECT_EQ(node.Ran(), "Release");
  EXPECT_EQ(CallSlot<std::string()>(view, 2), "answer of GetName");
  EXPECT_EQ(node.Ran(), "GetName");
  CallSlot<void(Text&)>(view, 3, "a");
  EXPECT_EQ(node.Ran(), "SetName a");
  EXPECT_EQ(CallSlot<std::string()>(view, 4), "answer of GetValue");
  EXPECT_EQ(node.Ran(), "GetValue");
  CallSlot<void(Text&)>(view, 5, "b");
  EXPECT_EQ(node.Ran(), "SetValue b");
  EXPECT_EQ(CallSlot<unsigned long()>(view, 6), kLargest);
  EXPECT_EQ(node.Ran(), "GetValueULong");
}

TEST(TheSlotsOfANode, RunItsNamedValues) {
  const Node node;
  const void* const view = static_cast<const INode*>(&node);
  EXPECT_EQ(CallSlot<std::string(const char*)>(view, 7, "a"), "answer of GetNamedString");
  EXPECT_EQ(node.Ran(), "GetNamedString a");
  EXPECT_EQ(CallSlot<unsigned long(const char*)>(view, 8, "b"), kLargest);
  EXPECT_EQ(node.Ran(), "GetNamedULong b");
  EXPECT_TRUE(CallSlot<bool(const char*)>(view, 9, "c"));
  EXPECT_EQ(node.Ran(), "GetNamedBool c");
  CallSlot<void(const char*, Text&)>(view, 10, "d", "text");
  EXPECT_EQ(node.Ran(), "SetNamedString d text");
  CallSlot<void(const char*, unsigned long)>(view, 11, "e", kLargest);
  EXPECT_EQ(node.Ran(), "SetNamedULong e 4294967295");
}

TEST(TheSlotsOfANode, RunItsChildren) {
  Node node;
  const void* const view = static_cast<const INode*>(&node);
  CallSlot<void(const char*, Text&)>(view, 12, "a", "text");
  EXPECT_EQ(node.Ran(), "AddChildString a text");
  CallSlot<void(const char*, int)>(view, 13, "b", -1);
  EXPECT_EQ(node.Ran(), "AddChildInt b -1");
  EXPECT_EQ(CallSlot<std::string(const char*)>(view, 14, "c"), "answer of GetChildString");
  EXPECT_EQ(node.Ran(), "GetChildString c");
  EXPECT_EQ(CallSlot<unsigned long(const char*)>(view, 15, "d"), kLargest);
  EXPECT_EQ(node.Ran(), "GetChildULong d");
  EXPECT_TRUE(CallSlot<bool(const char*)>(view, 16, "e"));
  EXPECT_EQ(node.Ran(), "GetChildBool e");
  EXPECT_FALSE(CallSlot<NodeHandle(const char*)>(view, 17, "f"));
  EXPECT_EQ(node.Ran(), "GetChild f");
  EXPECT_FALSE(CallSlot<h7::auto_com<INodeList>()>(view, 18));
  EXPECT_EQ(node.Ran(), "GetChildren");
  CallSlot<void(INode&)>(view, 19, node);
  EXPECT_EQ(node.Ran(), "AppendChild itself");
}

class NodeList final : public INodeList, public Recorder {
 public:
  void AddRef() const override { Run("AddRef"); }
  void Release() const override { Run("Release"); }
  NodeHandle First() override { return Run("First"), NodeHandle(&node); }
  NodeHandle Next() override { return Run("Next"), NodeHandle(); }
  Node node;
};

TEST(TheSlotsOfANodeList, RunItsCountAndItsWalk) {
  const NodeList list;
  const void* const view = static_cast<const INodeList*>(&list);
  CallSlot<void()>(view, 0);
  EXPECT_EQ(list.Ran(), "AddRef");
  CallSlot<void()>(view, 1);
  EXPECT_EQ(list.Ran(), "Release");
  EXPECT_EQ(CallSlot<NodeHandle()>(view, 2).Get(), &list.node);
  EXPECT_EQ(list.Ran(), "First");
  EXPECT_FALSE(CallSlot<NodeHandle()>(view, 3));
  EXPECT_EQ(list.Ran(), "Next");
}

class Document final : public H7XML::IDocument, public Recorder {
 public:
  void AddRef() const override { Run("AddRef"); }
  void Release() const override { Run("Release"); }
  NodeHandle GetRootElement() const override { return Run("GetRootElement"), NodeHandle(); }
};

TEST(TheSlotsOfADocument, RunItsCountAndItsRoot) {
  const Document document;
  const void* const view = static_cast<const H7XML::IDocument*>(&document);
  CallSlot<void()>(view, 0);
  EXPECT_EQ(document.Ran(), "AddRef");
  CallSlot<void()>(view, 1);
  EXPECT_EQ(document.Ran(), "Release");
  EXPECT_FALSE(CallSlot<NodeHandle()>(view, 2));
  EXPECT_EQ(document.Ran(), "GetRootElement");
}

class Message final : public ICmdMessage, public Recorder {
 public:
  std::string GetString(const char* name) const override { return Run("GetString", name), "text"; }
  unsigned long GetULong(const char* name) const override { return Run("GetULong", name), kLargest; }
  bool Has(const char* name) const override { return Run("Has", name), true; }
};

TEST(TheSlotsOfACommand, ReadItsParameters) {
  const Message message;
  const void* const view = static_cast<const ICmdMessage*>(&message);
  EXPECT_EQ(CallSlot<std::string(const char*)>(view, 0, "a"), "text");
  EXPECT_EQ(message.Ran(), "GetString a");
  EXPECT_EQ(CallSlot<unsigned long(const char*)>(view, 1, "b"), kLargest);
  EXPECT_EQ(message.Ran(), "GetULong b");
  EXPECT_TRUE(CallSlot<bool(const char*)>(view, 2, "c"));
  EXPECT_EQ(message.Ran(), "Has c");
}

using Handler = boost::function<NodeHandle(ICmdMessage const&)>;

// This is a function because g++, when it optimises, warns about bytes that a lambda without captures does not have.
NodeHandle Answer(ICmdMessage const&) {
  return NodeHandle();
}

class Dispatcher final : public UICmdDispatcher, public Recorder {
 public:
  void RegisterUICmd(Text& name, Handler handler) override { Run("RegisterUICmd", name, !handler.empty()); }
};

TEST(TheSlotOfADispatcher, TakesACommand) {
  const Dispatcher dispatcher;
  CallSlot<void(Text&, Handler)>(static_cast<const UICmdDispatcher*>(&dispatcher), 0, "name", &Answer);
  EXPECT_EQ(dispatcher.Ran(), "RegisterUICmd name true");
}

class Listener final : public ISystemEventCallback, public Recorder {
 public:
  void OnSystemEvent(INode& event) override { Run("OnSystemEvent", event.GetName()); }
};

TEST(TheSlotOfAListener, TakesAnEvent) {
  const Listener listener;
  Node event;
  CallSlot<void(INode&)>(static_cast<const ISystemEventCallback*>(&listener), 0, event);
  EXPECT_EQ(listener.Ran(), "OnSystemEvent answer of GetName");
}

class DriverManager final : public IDriverManager, public Recorder {
 public:
  void FindDrivers(unsigned long scope, const char* iid, std::vector<void*>& instances) override {
    Run("FindDrivers", scope, iid);
    instances.push_back(this);
  }
};

TEST(TheSlotOfTheDriverManager, FindsDrivers) {
  const DriverManager manager;
  std::vector<void*> found;
  CallSlot<void(unsigned long, const char*, std::vector<void*>&)>(static_cast<const IDriverManager*>(&manager), 0, 0UL,
                                                                  "iid", found);
  EXPECT_EQ(manager.Ran(), "FindDrivers 0 iid");
  EXPECT_EQ(found.size(), 1U);
}

class InstanceManager final : public IInstanceManager, public Recorder {
 public:
  bool RegisterQuery(const char* iid, void* instance) override { return Run("RegisterQuery", iid, instance == this), true; }
  void UnregisterQuery(const char* iid) override { Run("UnregisterQuery", iid); }
  void* Query(const char* iid) override { return Run("Query", iid), this; }
};

TEST(TheSlotsOfTheInstanceManager, PublishWithdrawAndFind) {
  InstanceManager manager;
  const void* const view = static_cast<const IInstanceManager*>(&manager);
  EXPECT_TRUE((CallSlot<bool(const char*, void*)>(view, 0, "a", &manager)));
  EXPECT_EQ(manager.Ran(), "RegisterQuery a true");
  CallSlot<void(const char*)>(view, 1, "b");
  EXPECT_EQ(manager.Ran(), "UnregisterQuery b");
  EXPECT_EQ(CallSlot<void*(const char*)>(view, 2, "c"), &manager);
  EXPECT_EQ(manager.Ran(), "Query c");
}

using Ids = DualKey<unsigned long, unsigned long>;

class Variable final : public IVariable, public Recorder {
 public:
  Ids GetIds() const override { return Run("GetIds"), Ids(kLargest, 2); }
  const char* GetName() const override { return Run("GetName"), "name"; }
  bool& TrapEnabled() override { return Run("TrapEnabled"), enabled; }
  bool enabled = false;
};

TEST(TheSlotsOfAVariable, TellIdsNameAndFlag) {
  const Variable variable;
  const void* const view = static_cast<const IVariable*>(&variable);
  EXPECT_TRUE(CallSlot<Ids()>(view, 0) == Ids(kLargest, 2));
  EXPECT_EQ(variable.Ran(), "GetIds");
  EXPECT_STREQ(CallSlot<const char*()>(view, 1), "name");
  EXPECT_EQ(variable.Ran(), "GetName");
  EXPECT_EQ(CallSlot<bool*()>(view, 2), &variable.enabled);
  EXPECT_EQ(variable.Ran(), "TrapEnabled");
}

class VariableManager final : public IVariableManager, public Recorder {
 public:
  IVariable* FindVariable(unsigned long deviceId, unsigned long variableId) override {
    return Run("FindVariable", deviceId, variableId), &variable;
  }
  void ListVariables(std::string& xml, bool userVariables) override {
    Run("ListVariables", userVariables);
    xml = "<variables/>";
  }
  Variable variable;
};

TEST(TheSlotsOfTheVariableManager, FindAndListVariables) {
  const VariableManager manager;
  const void* const view = static_cast<const IVariableManager*>(&manager);
  EXPECT_EQ((CallSlot<IVariable*(unsigned long, unsigned long)>(view, 0, kLargest, 2UL)), &manager.variable);
  EXPECT_EQ(manager.Ran(), "FindVariable 4294967295 2");
  std::string xml;
  CallSlot<void(std::string&, bool)>(view, 1, xml, true);
  EXPECT_EQ(xml, "<variables/>");
  EXPECT_EQ(manager.Ran(), "ListVariables true");
}

}  // namespace
