// From a request to its answer.
#pragma once

#include "host/CommunityAccess.h"
#include "host/Engine.h"
#include "host/SetSaves.h"

namespace VLK::host {

// Answers requests from the MIB handler: admits by community, opens the
// transaction, asks, and gives the answer the form of its protocol version.
//
// A SET whose values could not be written to the store is not acknowledged:
// it is answered undoFailed, since the values are in force but not kept.
//
// Threads: unchanging after construction; as safe side by side as Query() is.
class BDispatcher : public IRequestHandler {
public:
    BDispatcher(IMIBHandler& handler, const BCommunityAccess& access, ISetSaves& saves);

    bool Handle(SRequest& request, SResponse& response) override;
    void AnswerInstead(int status, const SRequest& request, SResponse& response) override;

private:
    void AnswerList(SRequest& request, SResponse& response);
    void AnswerBulk(const SRequest& request, SResponse& response);
    void AnswerSet(SRequest& request, SResponse& response);

    IMIBHandler& m_handler;
    const BCommunityAccess& m_access;
    ISetSaves& m_saves;
};

} // namespace VLK::host
