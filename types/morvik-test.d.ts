// What a test of a MorvikVM application can say. Made by `morvik-dev types`, which replaces it.
// docs/test.md tells more.

declare namespace MorvikTest {
  /** Milliseconds, or a text such as '500 ms', '10 s', '5 min' or '1 h'. */
  type Duration = number | string;

  /** A text that stands in another, or a regular expression. */
  type Text = string | RegExp;

  interface Patience {
    /** How much of the device's time may pass meanwhile; '30 s' when it is left out. */
    within?: Duration;
  }

  interface Launch {
    /** The second word of the launch line, 'plain' when it is left out; false waits for launch(). */
    launch?: string | boolean;
    /** The third word; DEVICE in it stands for the device's address. */
    instance?: string;
  }

  interface Options extends Launch {
    /** Several applications on the device, in the place of one. */
    applications?: Launch[];
    /** The time of day that the test begins at, as Date.parse takes it: '2026-01-01T12:00:00Z'. */
    at?: string;
    /** Files of the application's folder with these contents; null for one that is not to be there. */
    files?: { [name: string]: string | null };
    /** A recording beside the application that answers in the place of the device. */
    replay?: string;
  }

  /** Why an application ended; docs/ends.md lists the kinds. */
  interface End {
    kind: string;
    status: string;
    headline: string;
    why: string;
    cure: string;
    lastLines: string[];
  }

  interface App {
    readonly name: string;
    /** All lines that it has logged. */
    readonly lines: string[];
    readonly state: 'idle' | 'running' | 'interactive' | 'stopping' | 'ending' | 'ended' | 'broken';
    /** Waits for a line of its log behind the one that was waited for last; gives the line. */
    logs(text: Text, options?: Patience): Promise<string>;
    /** Waits for a message that it sends, behind the one that was waited for last. */
    sends(pattern: object, options?: Patience): Promise<any>;
    /** Waits for an exception that nobody catches, or another fault that the tool hints at. */
    throws(text?: Text, options?: Patience): Promise<string>;
    /** Waits until it may use the device. */
    interactive(options?: Patience): Promise<void>;
    /** Waits for its end; 'script-exit' is that of exit(). */
    ends(kind?: string, options?: Patience): Promise<End>;
    /** Launches it, anew when it runs. */
    launch(type?: string): Promise<void>;
    /** A file of its folder, which is a copy for this test. */
    read(file: string): Promise<string>;
  }

  interface ButtonArguments {
    type?: 'SIMPLE' | 'DOUBLE' | 'TRIPLE' | 'MULTIPLE' | 'LONG_START' | 'LONG_STOP' | (string & {});
  }

  interface RfidArguments {
    id?: string;
    direction?: 'IN' | 'OUT' | (string & {});
    app?: number | string;
    type?: 'NONE_TYPE' | 'FLAT' | 'MINIVORT' | 'VORTAS' | 'DRESS' | 'VOLUMZ' | (string & {});
    pict?: number | string;
    color?: 'NONE_COL' | 'RED' | 'BLUE' | 'GREEN' | 'YELLOW' | 'PINK' | 'BLACK' | 'GREY' | 'ORANGE' | 'PURPLE' | 'WHITE' | 'DARK_RED' | 'DARK_BLUE' | 'DARK_GREEN' | 'DARK_YELLOW' | 'BROWN' | (string & {});
    content?: string;
    hex?: string;
  }

  interface EarArguments {
    side?: 'LEFT' | 'RIGHT' | (string & {});
    step?: number | string;
  }

  interface EarsArguments {
    type?: 'START_LEFT' | 'START_RIGHT' | 'STOP_LEFT' | 'STOP_RIGHT' | 'BLOCKED_LEFT' | 'BLOCKED_RIGHT' | (string & {});
    step?: number | string;
    length?: number | string;
  }

  interface MessageArguments {
    uuid?: string;
    text?: string;
    type?: 'TEXT' | 'SOUND' | 'XML' | 'MIXED' | (string & {});
    header?: string;
  }

  interface ContactArguments {
    uuid?: string;
    firstname?: string;
    lastname?: string;
    alias?: string;
    object?: Array<string> | string;
  }

  interface CredentialsArguments {
    mode?: 'withhold' | 'give' | (string & {});
    values?: { [name: string]: string };
  }

  interface DockArguments {
    status?: number | string;
    change?: number | string;
  }

  interface RecognitionArguments {
    text?: string;
    confident?: number | string;
    semantic?: string;
  }

  interface PlayerArguments {
    action?: 'PLAY' | 'STOP' | 'PAUSE' | 'RESUME' | 'MUSIC_UPDATE' | (string & {});
  }

  interface LibraryArguments {
    list?: 'ARTIST' | 'FOLDER' | 'PLAYLIST' | 'GENRE' | 'SONG' | (string & {});
    names?: Array<string> | string;
  }

  interface RecordingArguments {
    file?: string;
  }

  interface PictureArguments {
    file?: string;
  }

  interface CallArguments {
    type?: 'INCOMING' | 'BEGINNING' | 'TERMINATED' | (string & {});
    who?: string;
  }

  interface SerialArguments {
    port?: string;
    text?: string;
    base?: string;
  }

  interface RefuseArguments {
    code?: 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED' | (string & {});
    command?: 'interactiveMode' | 'ping' | 'morvikinfo_query' | 'led' | 'ears' | 'dock' | 'tts' | 'asr' | 'multimedia' | 'webcam' | 'm2m' | 'serial' | 'serialCallback' | 'morvikMessageQuery' | 'getcontactList' | 'socialQuery' | (string & {});
    count?: 'ALWAYS' | (string & {});
  }

  interface DelayArguments {
    length?: number | string;
    command?: 'interactiveMode' | 'ping' | 'morvikinfo_query' | 'led' | 'ears' | 'dock' | 'tts' | 'asr' | 'multimedia' | 'webcam' | 'm2m' | 'serial' | 'serialCallback' | 'morvikMessageQuery' | 'getcontactList' | 'socialQuery' | (string & {});
  }

  interface FinishArguments {
    work?: 'led' | 'ears' | 'tts' | 'asr' | 'sound' | 'record' | 'photo' | 'dock-led' | 'dock-move' | (string & {});
    code?: 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED' | (string & {});
    text?: string;
  }

  interface PiecesArguments {
    size?: number | string;
    pause?: number | string;
  }

  interface Stimuli {
    /** press the button */
    button(named?: ButtonArguments): Promise<void>;
    button(type: 'SIMPLE' | 'DOUBLE' | 'TRIPLE' | 'MULTIPLE' | 'LONG_START' | 'LONG_STOP' | (string & {}), named?: ButtonArguments): Promise<void>;
    /** bring a tag to the reader, or take it away */
    rfid(named?: RfidArguments): Promise<void>;
    rfid(id: string, named?: RfidArguments): Promise<void>;
    rfid(id: string, direction: 'IN' | 'OUT' | (string & {}), named?: RfidArguments): Promise<void>;
    rfid(id: string, direction: 'IN' | 'OUT' | (string & {}), app: number | string, named?: RfidArguments): Promise<void>;
    /** turn an ear by hand, to a step from 0 to 16 */
    ear(named?: EarArguments): Promise<void>;
    ear(side: 'LEFT' | 'RIGHT' | (string & {}), named?: EarArguments): Promise<void>;
    ear(side: 'LEFT' | 'RIGHT' | (string & {}), step: number | string, named?: EarArguments): Promise<void>;
    /** tell one thing of an ear; a blocked ear stops what the ears are doing */
    ears(named?: EarsArguments): Promise<void>;
    ears(type: 'START_LEFT' | 'START_RIGHT' | 'STOP_LEFT' | 'STOP_RIGHT' | 'BLOCKED_LEFT' | 'BLOCKED_RIGHT' | (string & {}), named?: EarsArguments): Promise<void>;
    ears(type: 'START_LEFT' | 'START_RIGHT' | 'STOP_LEFT' | 'STOP_RIGHT' | 'BLOCKED_LEFT' | 'BLOCKED_RIGHT' | (string & {}), step: number | string, named?: EarsArguments): Promise<void>;
    ears(type: 'START_LEFT' | 'START_RIGHT' | 'STOP_LEFT' | 'STOP_RIGHT' | 'BLOCKED_LEFT' | 'BLOCKED_RIGHT' | (string & {}), step: number | string, length: number | string, named?: EarsArguments): Promise<void>;
    /** put a message of this sender into the box */
    message(named?: MessageArguments): Promise<void>;
    message(uuid: string, named?: MessageArguments): Promise<void>;
    message(uuid: string, text: string, named?: MessageArguments): Promise<void>;
    message(uuid: string, text: string, type: 'TEXT' | 'SOUND' | 'XML' | 'MIXED' | (string & {}), named?: MessageArguments): Promise<void>;
    /** keep a contact, in place of the one with this UUID */
    contact(named?: ContactArguments): Promise<void>;
    contact(uuid: string, named?: ContactArguments): Promise<void>;
    contact(uuid: string, firstname: string, named?: ContactArguments): Promise<void>;
    contact(uuid: string, firstname: string, lastname: string, named?: ContactArguments): Promise<void>;
    /** keep credentials; a name with no value behind it loses its own; alone, tell the names */
    credentials(named?: CredentialsArguments): Promise<void>;
    credentials(mode: 'withhold' | 'give' | (string & {}), named?: CredentialsArguments): Promise<void>;
    credentials(mode: 'withhold' | 'give' | (string & {}), values: { [name: string]: string }, named?: CredentialsArguments): Promise<void>;
    /** tell the state of the dock, in two numbers */
    dock(named?: DockArguments): Promise<void>;
    dock(status: number | string, named?: DockArguments): Promise<void>;
    dock(status: number | string, change: number | string, named?: DockArguments): Promise<void>;
    /** say something to the application that listens; SEMANTIC is XML */
    recognition(named?: RecognitionArguments): Promise<void>;
    recognition(text: string, named?: RecognitionArguments): Promise<void>;
    recognition(text: string, confident: number | string, named?: RecognitionArguments): Promise<void>;
    recognition(text: string, confident: number | string, semantic: string, named?: RecognitionArguments): Promise<void>;
    /** answer the application that listens with a result without a recognition */
    noise(): Promise<void>;
    /** tell one thing of the player; what plays goes on */
    player(named?: PlayerArguments): Promise<void>;
    player(action: 'PLAY' | 'STOP' | 'PAUSE' | 'RESUME' | 'MUSIC_UPDATE' | (string & {}), named?: PlayerArguments): Promise<void>;
    /** put other names into a list of the music library */
    library(named?: LibraryArguments): Promise<void>;
    library(list: 'ARTIST' | 'FOLDER' | 'PLAYLIST' | 'GENRE' | 'SONG' | (string & {}), named?: LibraryArguments): Promise<void>;
    library(list: 'ARTIST' | 'FOLDER' | 'PLAYLIST' | 'GENRE' | 'SONG' | (string & {}), names: Array<string> | string, named?: LibraryArguments): Promise<void>;
    /** choose the FLAC file that recordings hold; alone, the device's own again */
    recording(named?: RecordingArguments): Promise<void>;
    recording(file: string, named?: RecordingArguments): Promise<void>;
    /** choose the JPEG file that photos show; alone, the device's own again */
    picture(named?: PictureArguments): Promise<void>;
    picture(file: string, named?: PictureArguments): Promise<void>;
    /** call from outside, take a call up, or end it; WHO may be left out in a call */
    call(named?: CallArguments): Promise<void>;
    call(type: 'INCOMING' | 'BEGINNING' | 'TERMINATED' | (string & {}), named?: CallArguments): Promise<void>;
    call(type: 'INCOMING' | 'BEGINNING' | 'TERMINATED' | (string & {}), who: string, named?: CallArguments): Promise<void>;
    /** let a line come in on a serial port */
    serial(named?: SerialArguments): Promise<void>;
    serial(port: string, named?: SerialArguments): Promise<void>;
    serial(port: string, text: string, named?: SerialArguments): Promise<void>;
    serial(port: string, text: string, base: string, named?: SerialArguments): Promise<void>;
    /** stop interactive mode */
    stop(): Promise<void>;
    /** answer the next command, or COUNT of them, with a code and nothing else; COMMAND is ears, multimedia, interactiveMode, ...: a wrong one is answered with all of them */
    refuse(named?: RefuseArguments): Promise<void>;
    refuse(code: 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED' | (string & {}), named?: RefuseArguments): Promise<void>;
    refuse(code: 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED' | (string & {}), command: 'interactiveMode' | 'ping' | 'morvikinfo_query' | 'led' | 'ears' | 'dock' | 'tts' | 'asr' | 'multimedia' | 'webcam' | 'm2m' | 'serial' | 'serialCallback' | 'morvikMessageQuery' | 'getcontactList' | 'socialQuery' | (string & {}), named?: RefuseArguments): Promise<void>;
    refuse(code: 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED' | (string & {}), command: 'interactiveMode' | 'ping' | 'morvikinfo_query' | 'led' | 'ears' | 'dock' | 'tts' | 'asr' | 'multimedia' | 'webcam' | 'm2m' | 'serial' | 'serialCallback' | 'morvikMessageQuery' | 'getcontactList' | 'socialQuery' | (string & {}), count: 'ALWAYS' | (string & {}), named?: RefuseArguments): Promise<void>;
    /** refuse nothing any more */
    accept(): Promise<void>;
    /** answer commands that much later, 0 for at once */
    delay(named?: DelayArguments): Promise<void>;
    delay(length: number | string, named?: DelayArguments): Promise<void>;
    delay(length: number | string, command: 'interactiveMode' | 'ping' | 'morvikinfo_query' | 'led' | 'ears' | 'dock' | 'tts' | 'asr' | 'multimedia' | 'webcam' | 'm2m' | 'serial' | 'serialCallback' | 'morvikMessageQuery' | 'getcontactList' | 'socialQuery' | (string & {}), named?: DelayArguments): Promise<void>;
    /** end what goes on, TERMINATED or as told */
    finish(named?: FinishArguments): Promise<void>;
    finish(work: 'led' | 'ears' | 'tts' | 'asr' | 'sound' | 'record' | 'photo' | 'dock-led' | 'dock-move' | (string & {}), named?: FinishArguments): Promise<void>;
    finish(work: 'led' | 'ears' | 'tts' | 'asr' | 'sound' | 'record' | 'photo' | 'dock-led' | 'dock-move' | (string & {}), code: 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED' | (string & {}), named?: FinishArguments): Promise<void>;
    finish(work: 'led' | 'ears' | 'tts' | 'asr' | 'sound' | 'record' | 'photo' | 'dock-led' | 'dock-move' | (string & {}), code: 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED' | (string & {}), text: string, named?: FinishArguments): Promise<void>;
    /** send the next message in pieces of SIZE bytes, PAUSE milliseconds between them */
    pieces(named?: PiecesArguments): Promise<void>;
    pieces(size: number | string, named?: PiecesArguments): Promise<void>;
    pieces(size: number | string, pause: number | string, named?: PiecesArguments): Promise<void>;
    /** end the connection */
    drop(): Promise<void>;
  }

  interface Device extends Stimuli {
    /** What happens to one application alone. */
    for(app: App): Stimuli;
    /** All that can be seen of the device; docs/device-json.md tells its form. */
    view(): Promise<any>;
  }

  interface World {
    device: Device;
    app: App;
    apps: App[];
    time: Time;
  }

  interface Time {
    /** Lets so much of the device's time pass. */
    pass(length: Duration): Promise<void>;
    /** The device's time, in milliseconds since 1970; Date tells the same. */
    now(): number;
  }

  interface Expectations {
    /** It is this very value. */
    toBe(expected: any): void;
    /** It has the same members with the same values. */
    toEqual(expected: any): void;
    /** A text with a match; an object that has these members at least. */
    toMatch(pattern: any): void;
    /** A text with this in it; a list with an equal entry. */
    toContain(item: any): void;
    /** A function that throws, or a promise that fails, with such a text. */
    toThrow(text?: Text): any;
    /** Waits until the device shows this; with `not`, it does not show it now. */
    toShow(pattern: object, options?: Patience): Promise<void>;
  }
}

declare function test(name: string, body: (world: MorvikTest.World) => Promise<void>): void;
declare function test(name: string, options: MorvikTest.Options,
                      body: (world: MorvikTest.World) => Promise<void>): void;

declare function expect(value: any): MorvikTest.Expectations & { not: MorvikTest.Expectations };

declare var time: MorvikTest.Time;
