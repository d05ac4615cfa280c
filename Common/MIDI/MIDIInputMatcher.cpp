#include "Common/MIDI/MIDIInputMatcher.h"

#include "Common/MIDI/MIDIInput.h"
#include "Common/MIDI/MIDIMatch/MIDIMatchManager.h"
#include "Common/MIDI/MIDITrafficListener.h"
#include "Common/MIDI/SystemMIDIConfiguration.h"

#include <utility>

cMIDIInputMatcher::cMIDIInputMatcher(QString inputName, cSystemMIDIConfiguration* configuration,
                                     cMIDIMatchTriggerListener* listener, QObject* parent)
    : QObject(parent),
      inputName(inputName),
      systemMIDIConfiguration(configuration),
      matchManager(new cMIDIMatchManager(listener)),
      midiInput(nullptr)
{
    connect(configuration, &cSystemMIDIConfiguration::InputAddedSignal, this, &cMIDIInputMatcher::InputAdded);
    connect(configuration, &cSystemMIDIConfiguration::InputRemovedSignal, this, &cMIDIInputMatcher::InputRemoved);
    SetMIDIInput(configuration->GetMIDIInput(inputName));
}

cMIDIInputMatcher::~cMIDIInputMatcher()
{
    delete matchManager;
}

void cMIDIInputMatcher::AddMIDIMatchNibbleListIdentifier(const sMIDIMatchByteListIdentifier& pattern)
{
    matchManager->AddMIDIMatchNibbleListIdentifierToTree(pattern);
}

void cMIDIInputMatcher::SetMIDIInput(cMIDIInput* input)
{
    DisconnectMIDIInput();
    midiInput = input;
    if (midiInput)
    {
        // In this order, so that the bytes are matched before the read is announced.
        connect(midiInput, &cMIDIInput::MIDIReadReady, this, &cMIDIInputMatcher::MIDIReadReady);
        connect(midiInput, &cMIDIInput::MIDIReadReady, this, &cMIDIInputMatcher::MIDIInputReadSignal);
    }
}

void cMIDIInputMatcher::InputAdded(QString name)
{
    if (name == inputName)
    {
        SetMIDIInput(systemMIDIConfiguration->GetMIDIInput(name));
    }
}

void cMIDIInputMatcher::InputRemoved(QString name)
{
    if (name == inputName)
    {
        // The registry owns the input and may keep it alive; it just stops counting here.
        DisconnectMIDIInput();
        midiInput = nullptr;
    }
}

void cMIDIInputMatcher::MIDIReadReady()
{
    // A notification queued from another thread may arrive after the input went away.
    if (!midiInput)
    {
        return;
    }
    midiInput->ReadMIDIData(readData);
    if (readData.isEmpty())
    {
        return;
    }
    readBytes.assign(readData.constBegin(), readData.constEnd());
    runningStatusFixer.FixRunningStatus(readBytes, expandedBytes);
    if (trafficListener)
    {
        ProcessBytesTellingListener();
        return;
    }
    for (unsigned char byte : expandedBytes)
    {
        matchManager->ProcessByte(byte);
    }
}

void cMIDIInputMatcher::SetMIDITrafficListener(cMIDITrafficListener* listener)
{
    trafficListener = listener;
    // The cutting starts afresh: a message begun before belongs to no one.
    messageSplitter.Flush();
}

// A message is told before its last byte goes into the tree, since that byte
// is the one that completes a rule, so the listener hears of a message before
// the rules it sets off.
void cMIDIInputMatcher::ProcessBytesTellingListener()
{
    for (unsigned char byte : expandedBytes)
    {
        completedMessages.clear();
        messageSplitter.Feed(byte, completedMessages);
        for (const QByteArray& message : std::as_const(completedMessages))
        {
            trafficListener->MIDIMessageRead(inputName, message);
        }
        matchManager->ProcessByte(byte);
    }
}

void cMIDIInputMatcher::DisconnectMIDIInput()
{
    if (midiInput)
    {
        disconnect(midiInput, &cMIDIInput::MIDIReadReady, this, &cMIDIInputMatcher::MIDIReadReady);
        disconnect(midiInput, &cMIDIInput::MIDIReadReady, this, &cMIDIInputMatcher::MIDIInputReadSignal);
    }
}
