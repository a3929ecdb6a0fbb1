#include <unistd.h>

#include <csignal>
#include <set>

#include "QXPlatform/notifications/PushLines.h"
#include "agent/extensions/Program.h"
#include "agent/loop/Bus.h"
#include "agent/presentation/NotificationServer.h"
#include "agent/sources/Connector.h"
#include "agent/sources/PushObject.h"
#include "tests/support/FullDisk.h"
#include "tests/support/Test.h"

namespace QXAgent {
namespace {

using testing::ElementsAre;

constexpr const char* kServer = "org.freedesktop.Notifications";
constexpr const char* kServerPath = "/org/freedesktop/Notifications";
constexpr const char* kDistributor = "org.unifiedpush.Distributor.Test";
constexpr const char* kConnectorPath = "/org/unifiedpush/Connector";

// A bus daemon, for as long as this lives.
class PrivateBus {
 public:
  PrivateBus() : program_(startChild({"dbus-daemon", {"--session", "--nofork", "--print-address"}, {}})) {
    std::array<char, 256> text{};
    ssize_t count = 0;
    for (int i = 0; i < 1000 && (count = read(program_->output.get(), text.data(), text.size())) <= 0; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::string address(text.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    environment_.emplace("DBUS_SESSION_BUS_ADDRESS", address.substr(0, address.find('\n')));
  }
  void send(int signal) const { ::kill(program_->program->processId(), signal); }

 private:
  const QXPlatform::Result<StartedProgram> program_;
  std::optional<support::ScopedEnvironment> environment_;
};

// The agent's side, and others on the same bus, all on one loop.
class BusTest : public testing::Test {
 protected:
  Bus connect() { return std::move(Bus::connect(loop_).value()); }

  // Until the condition holds; false when it does not within a few seconds.
  bool runUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < end) sd_event_run(loop_.get(), 10'000);
    return condition();
  }

  // The name of the error that a call is answered with; empty: none.
  std::string answerTo(const Bus& caller, BusMessage call) {
    std::optional<std::string> answer;
    caller.send(std::move(call), [&](sd_bus_message& reply) {
      const sd_bus_error* error = sd_bus_message_get_error(&reply);
      answer = error == nullptr ? "" : error->name;
    });
    EXPECT_TRUE(runUntil([&] { return answer.has_value(); }));
    return answer.value_or("no answer");
  }

  const PrivateBus daemon_;
  EventLoop loop_;
};

TEST_F(BusTest, ACallThatCannotBeSentIsAnsweredWithAnError) {
  const Bus bus = connect();
  std::string error;
  const auto note = [&](sd_bus_message& reply) { error = errorOf(reply).value_or(""); };
  bus.send(bus.newCall("not a name", "/", "a.b", "C"), note);
  EXPECT_NE(error, "");
}

TEST_F(BusTest, KnowsWhoOwnsAName) {
  const Bus bus = connect();
  EXPECT_EQ(bus.ownerOf("com.example.Name"), "");
  ASSERT_TRUE(bus.requestName("com.example.Name"));
  EXPECT_EQ(bus.ownerOf("com.example.Name")->front(), ':');
  EXPECT_FALSE(connect().requestName("com.example.Name"));
  bus.releaseName("com.example.Name");
  EXPECT_EQ(bus.ownerOf("com.example.Name"), "");
}

// A notification server that does not answer the first time, and counts.
class SilentServer {
 public:
  explicit SilentServer(Bus bus) : bus_(std::move(bus)) {
    sd_bus_add_object_vtable(bus_.get(), nullptr, kServerPath, kServer, kTable, this);
    EXPECT_TRUE(bus_.requestName(kServer));
  }

  int asked = 0;

 private:
  static int capabilities(sd_bus_message* call, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(call, "as", 1, "body");
  }
  static int notify(sd_bus_message* call, void* self, sd_bus_error*) {
    return ++static_cast<SilentServer*>(self)->asked == 1 ? 1 : sd_bus_reply_method_return(call, "u", 7);
  }
  static constexpr sd_bus_vtable kTable[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("GetCapabilities", "", "as", capabilities, SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_VTABLE_END,
  };
  Bus bus_;
};

TEST_F(BusTest, AServerThatForgetsANotificationIsAskedAgain) {
  const Bus bus = connect();
  const SilentServer server(connect());
  NotificationServer presenter(loop_, bus, {}, {}, std::chrono::milliseconds(50));
  std::vector<std::optional<std::uint32_t>> ends;
  const auto note = [&](const Presenter::Outcome& outcome) {
    ends.push_back(outcome.end == Presenter::End::shown ? std::optional(outcome.id) : std::nullopt);
  };
  for (std::size_t i = 1; i <= 2; ++i) {
    presenter.show({}, 0, note);
    ASSERT_TRUE(runUntil([&] { return ends.size() == i; }));
  }
  EXPECT_THAT(ends, ElementsAre(std::nullopt, 7U));
  EXPECT_EQ(server.asked, 2);
}

// Signals to one program alone pass any match, whoever sent them.
TEST_F(BusTest, OnlyTheServerSaysWhatBecameOfANotification) {
  const Bus bus = connect();
  const Bus server = connect();
  const Bus stranger = connect();
  ASSERT_TRUE(bus.requestName("com.example.App.Push") && server.requestName(kServer));
  std::vector<std::string> heard;
  const NotificationServer presenter(
      loop_, bus, {},
      {.invoked = [&](auto id, const auto& action,
                      const auto& token) { heard.push_back(std::to_string(id) + action + token); },
       .closed = [&](auto id) { heard.push_back(std::to_string(id) + " closed"); },
       .sessionChanged = [&] { heard.emplace_back("another server"); }});
  const std::string owner = *bus.ownerOf("com.example.App.Push");
  const auto send = [&](const Bus& sender, const char* path, const char* interface, const char* member,
                        const char* types, auto... values) {
    sd_bus_message* signal = nullptr;
    sd_bus_message_new_signal(sender.get(), &signal, path, interface, member);
    const BusMessage owned(signal);
    sd_bus_message_append(signal, types, values...);
    sd_bus_message_set_destination(signal, owner.c_str());
    sd_bus_send(sender.get(), signal, nullptr);
    sd_bus_flush(sender.get());
  };
  for (const Bus* sender : {&stranger, &server}) {
    send(*sender, kServerPath, kServer, "ActivationToken", "us", 1, "-token");
    send(*sender, kServerPath, kServer, "ActionInvoked", "us", 1, "default");
    send(*sender, kServerPath, kServer, "NotificationClosed", "uu", 2, 2);
    send(*sender, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged", "sss", kServer, "",
         ":1.99");
  }
  EXPECT_TRUE(runUntil([&] { return heard.size() >= 2; }));
  runUntil([end = std::chrono::steady_clock::now() + std::chrono::milliseconds(100)] {
    return std::chrono::steady_clock::now() > end;
  });
  EXPECT_THAT(heard, ElementsAre("1default-token", "2 closed"));
}

// --- What others call

class RecordingReceiver final : public PushReceiver {
 public:
  bool receive(std::string_view key, std::string_view text) override {
    received.emplace_back(text);
    keys.emplace_back(key);
    return true;
  }
  void refuse(std::string_view) override { ++refused; }
  void report(std::string_view problem) override { reported += problem; }
  void rested() override {}

  std::vector<std::string> received;
  std::vector<std::string> keys;  // of what was received
  int refused = 0;
  std::string reported;
};

// A distributor that knows the older interface alone, and what it was told.
class OldDistributor {
 public:
  explicit OldDistributor(const Bus& bus) {
    sd_bus_slot* slot = nullptr;
    sd_bus_add_object_vtable(bus.get(), &slot, "/org/unifiedpush/Distributor", "org.unifiedpush.Distributor1",
                             kTable, this);
    slot_.reset(slot);
  }

  const char* answer = "NEW_ENDPOINT";
  std::string registered;
  std::string unregistered;

 private:
  static int takeRegistration(sd_bus_message* call, void* self, sd_bus_error*) {
    const char* service = nullptr;
    const char* token = nullptr;
    sd_bus_message_read(call, "ss", &service, &token);
    auto* distributor = static_cast<OldDistributor*>(self);
    distributor->registered = token;
    return sd_bus_reply_method_return(call, "ss", distributor->answer, "");
  }
  static int takeUnregistration(sd_bus_message* call, void* self, sd_bus_error*) {
    const char* token = nullptr;
    sd_bus_message_read(call, "s", &token);
    static_cast<OldDistributor*>(self)->unregistered = token;
    return sd_bus_reply_method_return(call, "");
  }
  static constexpr sd_bus_vtable kTable[] = {
      SD_BUS_VTABLE_START(0),
      SD_BUS_METHOD("Register", "sss", "ss", takeRegistration, SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_METHOD("Unregister", "s", "", takeUnregistration, SD_BUS_VTABLE_UNPRIVILEGED),
      SD_BUS_VTABLE_END,
  };
  BusSlot slot_;
};

class ConnectorTest : public BusTest {
 protected:
  explicit ConnectorTest(std::optional<std::string> distributor = {}) {
    keys_ = makeSubscriptionKeys();
    store_.save({Registration{kDistributor, "token", "https://push.example/1", keys_}, {}});
    source_.emplace(loop_, bus_, store_, receiver_,
                    UnifiedPush::Setting{"com.example.App.Push", "App", std::move(distributor)});
    connector_.emplace(bus_, *source_);
    object_.emplace(bus_, *source_, receiver_);
    EXPECT_TRUE(bus_.requestName("com.example.App.Push") && distributor_.requestName(kDistributor));
  }

  std::string sealed(const std::string& text) { return *sealMessage(keys_.subscription(), text); }

  BusMessage newCall(const Bus& caller, const char* interface, const char* member) {
    const bool isConnector = std::string_view(interface).starts_with("org.unifiedpush");
    return caller.newCall("com.example.App.Push", isConnector ? kConnectorPath : kPushPath, interface,
                          member);
  }

  // Message of the current interface, with a field that nobody asked for.
  BusMessage message(const Bus& caller, const char* token, const std::string& bytes) {
    auto call = newCall(caller, "org.unifiedpush.Connector2", "Message");
    sd_bus_message_open_container(call.get(), 'a', "{sv}");
    sd_bus_message_append(call.get(), "{sv}{sv}", "token", "s", token, "odd", "(ii)", 1, 2);
    sd_bus_message_open_container(call.get(), 'e', "sv");
    sd_bus_message_append(call.get(), "s", "message");
    sd_bus_message_open_container(call.get(), 'v', "ay");
    sd_bus_message_append_array(call.get(), 'y', bytes.data(), bytes.size());
    for (int i = 0; i < 3; ++i) sd_bus_message_close_container(call.get());
    return call;
  }

  const support::TemporaryDirectory directory_;
  const Database database_{directory_.path("spool.sqlite")};
  const RegistrationStore store_{database_};
  const Bus bus_ = connect();
  const Bus distributor_ = connect();
  const Bus stranger_ = connect();
  RecordingReceiver receiver_;
  SubscriptionKeys keys_;
  std::optional<UnifiedPush> source_;
  std::optional<Connector> connector_;
  std::optional<PushObject> object_;
};

TEST_F(ConnectorTest, TakesWhatFitsFromTheDistributorAndCountsTheRest) {
  const std::string longToken(200, 't');
  const struct {
    const Bus& sender;
    const char* token;
    std::string bytes;
    const char* answer;
    int refused;
  } table[] = {
      {distributor_, "token", sealed("a push"), "", 0},
      {stranger_, "token", sealed("b"), SD_BUS_ERROR_ACCESS_DENIED, 1},
      {stranger_, "token", "", SD_BUS_ERROR_ACCESS_DENIED, 1},
      {distributor_, "guessed", sealed("c"), "", 1},
      {distributor_, "", sealed("d"), "", 1},
      {distributor_, longToken.c_str(), sealed("e"), "", 1},
      {distributor_, "token", "", "", 1},
      {distributor_, "token", "not sealed", "", 1},
      {distributor_, "token", std::string(4'097, 'x'), "", 1},
  };
  for (const auto& [sender, token, bytes, answer, refused] : table) {
    receiver_.refused = 0;
    EXPECT_EQ(answerTo(sender, message(sender, token, bytes)), answer) << token << bytes.size();
    EXPECT_EQ(receiver_.refused, refused) << token << bytes.size();
  }
  EXPECT_THAT(receiver_.received, ElementsAre("a push"));
}

TEST_F(ConnectorTest, CallsOfAnotherShapeAreRefusedAndChangeNothing) {
  const struct {
    const char* interface;
    const char* member;
    const char* types;
    const char* first;
    const char* answer;
  } table[] = {
      {"org.unifiedpush.Connector2", "Message", "s", "token", SD_BUS_ERROR_INVALID_ARGS},
      {"org.unifiedpush.Connector1", "Message", "s", "token", SD_BUS_ERROR_INVALID_ARGS},
      {"org.unifiedpush.Connector1", "NewEndpoint", "ss", "token", ""},
      {"org.unifiedpush.Connector1", "Unregistered", "s", "guessed", ""},
      {"org.unifiedpush.Connector1", "Nothing", "s", "token", SD_BUS_ERROR_UNKNOWN_METHOD},
      {kPushInterface, "Deliver", "s", "{}", SD_BUS_ERROR_INVALID_ARGS},
      {kPushInterface, "Register", "s", "", SD_BUS_ERROR_INVALID_ARGS},
  };
  for (const auto& [interface, member, types, first, answer] : table) {
    auto call = newCall(distributor_, interface, member);
    sd_bus_message_append(call.get(), types, first, "no URL");
    EXPECT_EQ(answerTo(distributor_, std::move(call)), answer) << interface << member;
  }
  EXPECT_EQ(source_->endpoint(), "https://push.example/1");

  const std::string tooLong(QXPlatform::kLongestPush + 1, 'x');
  auto call = newCall(stranger_, kPushInterface, "Deliver");
  sd_bus_message_append_array(call.get(), 'y', tooLong.data(), tooLong.size());
  EXPECT_EQ(answerTo(stranger_, std::move(call)), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_TRUE(receiver_.received.empty());
}

TEST_F(ConnectorTest, WhatCannotBeKeptOrLookedUpIsToBeSentAgainAndChangesNothing) {
  const struct {
    const char* interface;
    const char* member;
    const char* types;
    const char* failure;
  } table[] = {
      {"org.unifiedpush.Connector1", "NewEndpoint", "ss", SD_BUS_ERROR_LIMITS_EXCEEDED},
      {"org.unifiedpush.Connector1", "Unregistered", "s", SD_BUS_ERROR_LIMITS_EXCEEDED},
      {kPushInterface, "Unregister", "", SD_BUS_ERROR_FAILED},
      {kPushInterface, "Register", "", SD_BUS_ERROR_FAILED},
  };
  for (const auto& [interface, member, types, failure] : table) {
    auto call = newCall(distributor_, interface, member);
    sd_bus_message_append(call.get(), types, "token", "https://push.example/2");
    const support::FullDisk full(0);
    EXPECT_EQ(answerTo(distributor_, std::move(call)), failure) << member;
  }
  EXPECT_EQ(source_->endpoint(), "https://push.example/1");
  EXPECT_EQ(store_.load().current->endpoint, "https://push.example/1");

  const std::string sender = *bus_.ownerOf(kDistributor);
  sd_bus_set_method_call_timeout(bus_.get(), 50'000);
  daemon_.send(SIGSTOP);
  EXPECT_EQ(source_->message(sender, {"token", sealed("a push"), "1"}), UnifiedPush::Answer::tryAgain);
  daemon_.send(SIGCONT);
  sd_bus_set_method_call_timeout(bus_.get(), 0);
  EXPECT_EQ(source_->message(sender, {"token", sealed("a push"), "1"}), UnifiedPush::Answer::done);
}

TEST_F(ConnectorTest, ARepetitionBearsTheSameKey) {
  const std::string first = sealed("a");
  const std::string second = sealed("a");
  for (const auto& [bytes, id] : {std::pair{first, "1"}, std::pair{second, "1"}, std::pair{first, ""},
                                  std::pair{first, ""}, std::pair{second, ""}, std::pair{first, "2"}}) {
    auto call = newCall(distributor_, "org.unifiedpush.Connector1", "Message");
    sd_bus_message_append(call.get(), "s", "token");
    sd_bus_message_append_array(call.get(), 'y', bytes.data(), bytes.size());
    sd_bus_message_append(call.get(), "s", id);
    EXPECT_EQ(answerTo(distributor_, std::move(call)), "");
  }
  const auto& keys = receiver_.keys;
  ASSERT_EQ(keys.size(), 6U);
  EXPECT_EQ(keys[0], keys[1]);
  EXPECT_EQ(keys[2], keys[3]);
  EXPECT_EQ(std::set(keys.begin(), keys.end()).size(), 4U);
}

TEST_F(ConnectorTest, WhatIsHandedOverOnceBearsItsKey) {
  for (const auto& [key, answer] : {std::pair{"", SD_BUS_ERROR_INVALID_ARGS}, std::pair{"a line", ""}}) {
    auto call = newCall(stranger_, kPushInterface, "DeliverOnce");
    sd_bus_message_append(call.get(), "say", key, 2, '{', '}');
    EXPECT_EQ(answerTo(stranger_, std::move(call)), answer);
  }
  EXPECT_THAT(receiver_.keys, ElementsAre("once:a line"));
}

TEST_F(ConnectorTest, UnregisterIsAnsweredWhenTheDistributorHasBeenTold) {
  OldDistributor distributor(distributor_);
  distributor.answer = "REGISTRATION_SUCCEEDED";
  source_->renew();
  EXPECT_TRUE(runUntil([&] { return !source_->isBusy(); })) << "an endpoint need not be said again";
  EXPECT_EQ(distributor.registered, "token");
  EXPECT_EQ(answerTo(stranger_, newCall(stranger_, kPushInterface, "Unregister")), "");
  EXPECT_EQ(distributor.unregistered, "token");
  EXPECT_FALSE(store_.load().current || store_.load().isWanted);
}

constexpr const char* kNewDistributor = "org.unifiedpush.Distributor.New";

class NewDistributorTest : public ConnectorTest {
 protected:
  NewDistributorTest() : ConnectorTest(kNewDistributor) {}
};

TEST_F(NewDistributorTest, IsRegisteredWithWhenItComesAndTakesTheOldOnesPlaceWithItsEndpoint) {
  const OldDistributor before(distributor_);
  source_->renew();
  EXPECT_EQ(receiver_.reported, std::string("the distributor ") + kNewDistributor + " is not there");
  EXPECT_TRUE(store_.load().isWanted);

  const Bus bus = connect();
  const OldDistributor after(bus);
  ASSERT_TRUE(bus.requestName(kNewDistributor));
  ASSERT_TRUE(runUntil([&] { return !after.registered.empty(); }));
  EXPECT_TRUE(source_->isBusy());
  EXPECT_EQ(answerTo(distributor_, message(distributor_, "token", sealed("from the old one"))), "");
  EXPECT_EQ(source_->endpoint(), "https://push.example/1");

  auto call = newCall(bus, "org.unifiedpush.Connector1", "NewEndpoint");
  sd_bus_message_append(call.get(), "ss", after.registered.c_str(), "https://push.example/2");
  EXPECT_EQ(answerTo(bus, std::move(call)), "");
  EXPECT_TRUE(runUntil([&] { return !source_->isBusy(); }));
  EXPECT_EQ(before.unregistered, "token");
  const auto [current, next, isWanted] = store_.load();
  EXPECT_EQ(current->endpoint, "https://push.example/2");
  EXPECT_EQ(current->token, after.registered);
  EXPECT_FALSE(next);
  EXPECT_THAT(receiver_.received, ElementsAre("from the old one"));
}

}  // namespace
}  // namespace QXAgent
