#include "AO_ThreadTransport.h"

#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/interface/CrashCatchers.h"
#include "platform/com/apartment.h"
#include "platform/last_error.h"
#include "platform/memory.h"
#include "platform/message_queue.h"
#include "platform/text.h"
#include "unicomp/LocalRPC/interface/AO_ThreadTransport.h"

#include <shared_mutex>

namespace LocalRPC {

namespace details {

namespace {

constexpr int MessagesPerRound = 100;
constexpr unsigned BadPointerExitCode = 0xFFFFFFFF;
constexpr unsigned TerminatedExitCode = 1;

// The run that the calling thread serves.
thread_local CThreadRun* t_Run = nullptr;

class CServing {
public:
    explicit CServing(CThreadRun& run) noexcept { t_Run = &run; }
    ~CServing() { t_Run = nullptr; }
    CServing(const CServing&) = delete;
    CServing& operator=(const CServing&) = delete;
};

} // namespace

std::string ThreadErrorText(DWORD error) {
    constexpr DWORD SystemFacility = 0x80070000;
    const DWORD status = static_cast<LONG>(error) > 0 ? SystemFacility | (error & 0xFFFF) : error;
    const bool isSystem = (status & 0xFFFF0000) == SystemFacility;
    const std::string text =
        isSystem ? platform::ToUtf8(platform::SystemErrorText(status & 0xFFFF)) : std::string();
    return text.empty() ? "create thread unknown error" : text;
}

// ---- CThreadRun ----

CThreadRun::CThreadRun(const CThreadBase& transport, utils::ITaskStorage& storage)
    : StatusEvent(true, eCSRun), CommandEvent(false, NoCommand), m_Transport(&transport), m_Storage(&storage) {
    StatusEvent.Set(eCSStop);
}

void CThreadRun::Loop() {
    for (bool goOn = true; goOn && !IsAbandoned();) {
        goOn = WaitForCommand();
        Drain();
        DispatchMessages();
    }
    // What the last messages have posted.
    Drain();
}

// False for the stop command.
bool CThreadRun::WaitForCommand() {
    if (CommandEvent.State() != TasksCommand)
        static_cast<void>(platform::WaitForEventOrMessages(&CommandEvent.Event(), platform::Infinite));
    return CommandEvent.State() != StopCommand;
}

void CThreadRun::Drain() {
    for (;;) {
        CTaskPtr task;
        if (!Pop(task))
            return;
        if (!task)
            break;
        CAOTransportBaseBase::execute_task(task);
        task.reset();
        const std::scoped_lock lock(m_Lock);
        if (!IsAbandoned())
            m_Storage->OnTaskDone();
    }
    // A stop command stays.
    CommandEvent.Change(TasksCommand, NoCommand);
}

// False when the storage may be gone.
bool CThreadRun::Pop(CTaskPtr& task) {
    const std::scoped_lock lock(m_Lock);
    if (IsAbandoned())
        return false;
    m_Storage->Pop(task);
    return true;
}

void CThreadRun::DispatchMessages() {
    platform::tagMessage message;
    for (int i = 0; i < MessagesPerRound && platform::TakeMessage(message); ++i)
        platform::DispatchMessage(message);
}

void CThreadRun::Abandon() {
    const std::scoped_lock lock(m_Lock);
    m_Abandoned = true;
}

// ---- CThreadBase ----

CThreadBase::CThreadBase(DWORD stackSize, utils::ITaskStorage* storage)
    : CAOTransportBase(storage), m_StackSize(stackSize), m_Run(std::make_shared<CThreadRun>(*this, *storage)) {}

CThreadBase::~CThreadBase() = default;

CThreadRun* CThreadBase::OwnRun() const noexcept {
    return t_Run != nullptr && t_Run->IsOf(*this) ? t_Run : nullptr;
}

bool CThreadBase::Post(const CTaskPtr& task) {
    if (CThreadRun* run = OwnRun())
        return PostFromOwnThread(*run, task);
    while (!IsBlocked()) {
        EnsureRunning();
        const std::shared_lock lock(m_PostLock);
        if (IsBlocked())
            break;
        // A stop has come between. What it left behind would wait for ever.
        if (!IsRunning())
            continue;
        if (task)
            m_Storage->Push(task);
        m_Run->CommandEvent.Set(CThreadRun::TasksCommand);
        return true;
    }
    return false;
}

bool CThreadBase::PostFromOwnThread(CThreadRun& run, const CTaskPtr& task) {
    if (IsBlocked())
        return false;
    // Pushed, it would wait for the thread that is waiting for it.
    if (task && task->IsSync()) {
        const CTaskPtr held(task);
        execute_task(held);
        return true;
    }
    if (task)
        m_Storage->Push(task);
    // A stop command stays: its last drain takes the task along.
    run.CommandEvent.Change(CThreadRun::NoCommand, CThreadRun::TasksCommand);
    run.CommandEvent.CMTUEvent::Set();
    return true;
}

void CThreadBase::EnsureRunning() {
    if (IsRunning())
        return;
    const std::scoped_lock lock(m_Lock);
    if (!IsRunning() && !Start())
        throw local_rpc_exception("object wasn't initialized!");
}

bool CThreadBase::Start() {
    if (OwnRun() != nullptr)
        return Stop(true, false);
    for (;;) {
        {
            const std::scoped_lock lock(m_Lock);
            if (!IsRunning())
                return StartStopped();
        }
        // Takes the lock for posts, which comes first.
        if (!Stop(true, false))
            return false;
    }
}

bool CThreadBase::StartStopped() {
    if (m_Run->IsAbandoned())
        m_Run = std::make_shared<CThreadRun>(*this, *m_Storage);
    m_Run->StatusEvent.Reset();
    m_Run->CommandEvent.Set(CThreadRun::TasksCommand);
    auto thread = platform::CThreadHandle::Start(m_StackSize, ThrFunc, this);
    if (!thread)
        throw local_rpc_exception(ThreadErrorText(platform::GetLastError()));
    m_Thread = std::move(*thread);
    m_ThreadId = m_Thread.ThreadId();
    if (m_Run->StatusEvent.Wait(platform::Infinite) != CThreadRun::eCSRun)
        return false;
    Unblock();
    m_Running.exchange(1);
    return true;
}

unsigned int CThreadBase::ThrFunc(void* This) {
    const bool isReadable = platform::IsReadable(This, sizeof(CThreadBase));
    if (!BugSlayerUtil::Assert(isReadable, L"!IsBadReadPtr(This,sizeof(CThreadBase))"))
        return BadPointerExitCode;
    // The transport waits for the first signal; after that it may let this thread go at any time.
    const std::shared_ptr<CThreadRun> run = static_cast<CThreadBase*>(This)->m_Run;
    const BugSlayerUtil::CThreadCrashCatchers catchers;
    {
        const CServing serving(*run);
        run->StatusEvent.Set(CThreadRun::eCSRun);
        CoInitialize(nullptr);
        run->Loop();
        CoUninitialize();
    }
    run->StatusEvent.Set(CThreadRun::eCSStop);
    return 0;
}

bool CThreadBase::StopEx(const bool clear, const ULONG timeout, const bool block) {
    if (OwnRun() != nullptr) {
        BugSlayerUtil::Assert(false, L"!\"Can't stop thread from itself!\"");
        return false;
    }
    utils::CTaskQueue cleared; // destroyed when all locks are left
    const std::scoped_lock posts(m_PostLock);
    const std::scoped_lock lock(m_Lock);
    if (!IsRunning())
        return true;
    if (block)
        Block(false);
    if (clear)
        cleared = m_Storage->Take();
    return EndThread(timeout);
}

bool CThreadBase::EndThread(ULONG timeout) {
    m_Run->StatusEvent.Reset();
    m_Run->CommandEvent.Set(CThreadRun::StopCommand);
    const LONG _cs = m_Run->StatusEvent.Wait(timeout);
    const bool isStopped = timeout != platform::Infinite || _cs == CThreadRun::eCSStop;
    if (timeout == platform::Infinite)
        BugSlayerUtil::Assert(CThreadRun::eCSStop == _cs, L"eCSStop==_cs");
    const DWORD wfsoRes = m_Thread.Wait(timeout);
    BugSlayerUtil::Assert(platform::WaitFailed != wfsoRes, L"((DWORD)0xFFFFFFFF)!=wfsoRes");
    if (wfsoRes == platform::WaitTimeout) {
        m_Run->Abandon();
        const bool bRes = m_Thread.Terminate(TerminatedExitCode);
        BugSlayerUtil::Assert(bRes, L"bRes");
    }
    const bool _ch_result = m_Thread.Close();
    BugSlayerUtil::Assert(_ch_result, L"_ch_result");
    m_Running.exchange(0);
    return isStopped;
}

void CThreadBase::LetThreadGo() {
    if (OwnRun() == nullptr)
        return;
    m_Run->Abandon();
    m_Thread.Close();
    m_Running.exchange(0);
}

// ---- CThread ----

CThread::~CThread() {
    Stop(true, true);
    // The last reference was dropped by a task: the thread outlives its transport.
    LetThreadGo();
}

} // namespace details

CActiveObject_thread::CActiveObject_thread(DWORD stackSize) : CActiveObject_base(new details::CThread(stackSize)) {}

CTerminate_Local_RPC_Proxy::~CTerminate_Local_RPC_Proxy() { StopEx(true, platform::Infinite, false); }

} // namespace LocalRPC
