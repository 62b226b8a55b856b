// SPDX-License-Identifier: GPL-2.0-or-later
// A session manager for tests, of the X Session Management Protocol (X Consortium standard, 1.0).
//
// Prints what SESSION_MANAGER has to be, a line. Then each line "log out" that it reads asks its
// clients to save themselves and ends them when all have, as those of desktops do. It prints a line
// for what its clients do: "client", "interacts", "goes on" or "cancels" behind an interaction,
// "saved" or "not saved", "logged out" or "log-out cancelled", "gone".
#include <X11/ICE/ICElib.h>
#include <X11/ICE/ICEutil.h>
#include <X11/SM/SMlib.h>
#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace {

struct Client {
  SmsConn connection;
  bool isAsked = false;
};

std::vector<Client> clients;
std::vector<IceConn> connections;

void say(const std::string& line) {
  std::cout << line << std::endl;
}

Client& clientOf(SmsConn connection) {
  return *std::find_if(clients.begin(), clients.end(), [connection](const Client& client) {
    return client.connection == connection;
  });
}

void forget(SmsConn connection) {
  std::erase_if(clients,
                [connection](const Client& client) { return client.connection == connection; });
  const IceConn ice = SmsGetIceConnection(connection);
  std::erase(connections, ice);
  SmsCleanUp(connection);
  IceSetShutdownNegotiation(ice, False);
  IceCloseConnection(ice);
  say("gone");
}

Status registerClient(SmsConn connection, SmPointer, char* previousId) {
  if (previousId != nullptr) return 0;
  char* id = SmsGenerateClientID(connection);
  SmsRegisterClientReply(connection, id);
  std::free(id);
  // Each new client is told to save itself once, and nothing more.
  SmsSaveYourself(connection, SmSaveLocal, False, SmInteractStyleNone, False);
  say("client");
  return 1;
}

void interactRequest(SmsConn connection, SmPointer, int) {
  say("interacts");
  SmsInteract(connection);
}

void interactDone(SmsConn, SmPointer, Bool cancels) {
  say(cancels ? "cancels" : "goes on");
}

void saveYourselfDone(SmsConn connection, SmPointer, Bool success) {
  if (!clientOf(connection).isAsked) return;
  clientOf(connection).isAsked = false;
  say(success ? "saved" : "not saved");
  if (success) {
    SmsDie(connection);
    say("logged out");
  } else {
    SmsShutdownCancelled(connection);
    say("log-out cancelled");
  }
}

void closeConnection(SmsConn connection, SmPointer, int count, char** reasons) {
  SmFreeReasons(count, reasons);
  forget(connection);
}

void setProperties(SmsConn, SmPointer, int count, SmProp** properties) {
  for (int i = 0; i < count; ++i) SmFreeProperty(properties[i]);
  std::free(properties);
}

void deleteProperties(SmsConn, SmPointer, int count, char** names) {
  for (int i = 0; i < count; ++i) std::free(names[i]);
  std::free(names);
}

Status newClient(SmsConn connection, SmPointer, unsigned long* mask, SmsCallbacks* callbacks,
                 char**) {
  *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
          SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask |
          SmsSaveYourselfDoneProcMask | SmsCloseConnectionProcMask | SmsSetPropertiesProcMask |
          SmsDeletePropertiesProcMask | SmsGetPropertiesProcMask;
  callbacks->register_client.callback = registerClient;
  callbacks->interact_request.callback = interactRequest;
  callbacks->interact_done.callback = interactDone;
  callbacks->save_yourself_request.callback = [](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {};
  callbacks->save_yourself_phase2_request.callback = [](SmsConn client, SmPointer) {
    SmsSaveYourselfPhase2(client);
  };
  callbacks->save_yourself_done.callback = saveYourselfDone;
  callbacks->close_connection.callback = closeConnection;
  callbacks->set_properties.callback = setProperties;
  callbacks->delete_properties.callback = deleteProperties;
  callbacks->get_properties.callback = [](SmsConn client, SmPointer) {
    SmsReturnProperties(client, 0, nullptr);
  };
  clients.push_back({connection});
  return 1;
}

void logOut() {
  for (Client& client : clients) {
    client.isAsked = true;
    SmsSaveYourself(client.connection, SmSaveBoth, True, SmInteractStyleAny, False);
  }
}

void processMessages(IceConn connection) {
  if (IceProcessMessages(connection, nullptr, nullptr) != IceProcessMessagesIOError) return;
  const auto dead = std::find_if(clients.begin(), clients.end(), [connection](const Client& one) {
    return SmsGetIceConnection(one.connection) == connection;
  });
  if (dead != clients.end()) forget(dead->connection);
}

/// Until the reader of the lines has gone.
void serve(IceListenObj* listeners, int count) {
  std::string typed;
  while (true) {
    std::vector<pollfd> waiting{{0, POLLIN, 0}};
    for (int i = 0; i < count; ++i) {
      waiting.push_back({IceGetListenConnectionNumber(listeners[i]), POLLIN, 0});
    }
    const std::vector<IceConn> known = connections;
    for (const IceConn one : known) waiting.push_back({IceConnectionNumber(one), POLLIN, 0});
    if (poll(waiting.data(), waiting.size(), -1) < 0) return;
    const auto firstClient = static_cast<size_t>(count) + 1;
    for (size_t i = firstClient; i < waiting.size(); ++i) {
      if (waiting[i].revents != 0) processMessages(known[i - firstClient]);
    }
    for (size_t i = 1; i < firstClient; ++i) {
      if (waiting[i].revents == 0) continue;
      IceAcceptStatus status;
      const IceConn accepted = IceAcceptConnection(listeners[i - 1], &status);
      if (accepted != nullptr) connections.push_back(accepted);
    }
    if (waiting[0].revents == 0) continue;
    if (!std::getline(std::cin, typed)) return;
    if (typed == "log out") logOut();
  }
}

}  // namespace

int main() {
  // A client that dies must not end this program: the library does that unless told otherwise.
  IceSetIOErrorHandler([](IceConn) {});
  char error[256] = "";
  const auto everybody = [](char*) -> Bool { return True; };
  if (!SmsInitialize("KelvaneFS tests", "1", newClient, nullptr, everybody, sizeof error, error)) {
    std::cerr << error << '\n';
    return 1;
  }
  int count = 0;
  IceListenObj* listeners = nullptr;
  if (!IceListenForConnections(&count, &listeners, sizeof error, error)) {
    std::cerr << error << '\n';
    return 1;
  }
  for (int i = 0; i < count; ++i) IceSetHostBasedAuthProc(listeners[i], everybody);
  char* ids = IceComposeNetworkIdList(count, listeners);
  say(ids);
  std::free(ids);
  serve(listeners, count);
  IceFreeListenObjs(count, listeners);
}
