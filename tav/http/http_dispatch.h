// SPDX-License-Identifier: Apache-2.0
// Brings the messages of a page process to the session they belong to. Call these from the service's DispatchMessage;
// false: the message is for no session, or its page has finished with it.
//
// The session timer's message is not among them: it names its session by "SID", to be looked up in HttpSessions.
#pragma once

#include <tav/export.h>
#include <tav/framework/msg.h>

namespace tav {

// By the message's identifier, which is the session's: what page timers post.
TAV_API bool httpDisptachBySID(vorn::cMsg& msg);
// By the message's identifier, which is that of the request that a session's page is at work on: what the front end
// tells of it, and answers of services that were asked under the request's identifier.
TAV_API bool httpDisptachByMsgID(vorn::cMsg& msg);

}  // namespace tav
