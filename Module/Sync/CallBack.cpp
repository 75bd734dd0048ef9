#include "Module/Sync/CallBack.h"

void SendCallBackSafe(CCallBack* callback, CallBackType type, unsigned long long arg1,
                      unsigned long long arg2, void* data) {
    if (callback != nullptr) callback->OnStateChange(type, arg1, arg2, data);
}
