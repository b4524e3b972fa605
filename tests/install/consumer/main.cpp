// The smallest host: asks the MIB for its first object.
#include <vkmibh/vkmibh.h>

#include <cstdio>

int main()
{
    VLK::BMibHandler handler(nullptr);
    handler.Init(nullptr, nullptr);
    VLK::BTransaction request(1);
    const unsigned id = VLK::BTransactions::GetInstance()->StartTransaction(&request);
    VLK::BVarBindList list;
    list.Append(VLK::BObjectIdentifier(VLK::BString("1.3.6.1.2.1.1")));
    int errorIndex = 0;
    const int status = handler.Query(VLK::ePduGetNext, static_cast<int>(id), VLK::BSecurityParams(),
                                     VLK::BString(), list, errorIndex);
    VLK::BTransactions::GetInstance()->EndTransaction(id);
    std::printf("%s %s\n", list[0].Name().ToString().c_str(),
                list[0].Value().Octets().ToDispStr().c_str());
    return status;
}
