// What a script of MorvikVM can call. Made by `morvik-dev types`, which replaces it.
// There is no browser and no Node.js here: name this file in jsconfig.json.

declare namespace Morvik {
  /** How a command went. One command can give several: `OK` when it begins and `TERMINATED` when it is done. */
  type Code = 'OK' | 'ERROR' | 'TIMEOUT' | 'TERMINATED' | 'CANCELLED' | 'BUSY' | 'BAD_INTERACTIVEID' | 'SCHEDULE_EVENT' | 'NOT_CONNECTED';
  /** A colour as it goes to the device: a name such as `red`, or `#rrggbb`. `black` is dark. */
  type Color = string;
  /** A time, in milliseconds. */
  type Milliseconds = number;
  /** A whole number of times. */
  type Times = number;
  /** A position of an ear, from 0, where it points after a reset, to 16. `null` leaves the ear alone. */
  type EarPosition = number | null;
  /** So many steps further, or back below zero. `null` leaves the ear alone. */
  type EarSteps = number | null;
  /** Where the dock drives. */
  type Direction = 'UP' | 'DOWN' | 'LEFT' | 'RIGHT' | 'STOP' | (string & {});
  /** A file of the application's folder: letters, digits, `_`, `-`, `/` and single dots, and not `descriptor.xml`. */
  type FileName = string;
  /** The address of something on the web. */
  type Url = string;
  /** A text. */
  type Text = string;
  /** A language, such as `en`. */
  type Language = string;
  /** What the device shall listen for; its recogniser defines how that is written. */
  type Grammar = string;
  /** The name or address of a machine. */
  type Host = string;
  /** A port, as a number and not as a text. */
  type Port = number;
  /** The speed of a serial port. */
  type Baud = number;
  /** What the player plays: an address, `./name` for a file of the application's folder, or a data object. */
  type Source = string | DataFile;
  /** Header lines of a request. */
  type Headers = { [name: string]: any } | Array<{ [name: string]: any }>;
  /** What a request sends. */
  type Params = { [name: string]: any };
  /** Ids of messages: the values of an array or of any object. */
  type Ids = string[] | { [name: string]: string };
  /** Whom a message goes to. */
  type Receiver = { uuid: string; objects?: string[] };
  /** An object whose `onMessage` hears each line. */
  type SerialListener = { onMessage(self: any, port: string, data: string): boolean | void; [name: string]: any };
  /** What an ear does. */
  type EarEvent = 'START_LEFT' | 'START_RIGHT' | 'STOP_LEFT' | 'STOP_RIGHT' | 'BLOCKED_LEFT' | 'BLOCKED_RIGHT';
  /** How the button was pressed. */
  type ButtonPress = 'SIMPLE' | 'DOUBLE' | 'TRIPLE' | 'MULTIPLE' | 'LONG_START' | 'LONG_STOP';
  /** What the player did. */
  type PlayerAction = 'PLAY' | 'STOP' | 'PAUSE' | 'RESUME' | 'MUSIC_UPDATE';
  /** What becomes of a call. */
  type CallType = 'INCOMING' | 'BEGINNING' | 'TERMINATED';
  /** Whether a tag came to the reader or left it. */
  type TagDirection = 'IN' | 'OUT';
  /** The colour of a tag. */
  type TagColor = 'NONE_COL' | 'RED' | 'BLUE' | 'GREEN' | 'YELLOW' | 'PINK' | 'BLACK' | 'GREY' | 'ORANGE' | 'PURPLE' | 'WHITE' | 'DARK_RED' | 'DARK_BLUE' | 'DARK_GREEN' | 'DARK_YELLOW' | 'BROWN';
  /** What a message holds. */
  type ContentType = 'TEXT' | 'SOUND' | 'XML' | 'MIXED';
  /** Stands for a file. */
  interface DataFile {
    /** What the file holds, read anew each time, up to its first zero byte. */
    readonly text: string;
  }
  /** Stands for a file of the device's. It can be played or sent, and has no text to read. */
  interface MediaFile {
  }
  /** What a server answered. */
  interface HttpAnswer {
    /** All header lines with the status line. */
    header: string;
    /** The body. */
    content: string;
  }
  /** How the application was launched: `name`, and what a tag or a phrase adds. */
  interface LaunchType {
    /** `RFID`, `ASR`, or the second word of the launch line. */
    name: string;
    id?: string;
    app?: string;
    type?: string;
    pict?: string;
    color?: string;
    /** What the tag holds. */
    data?: string;
    /** What was said. */
    text?: string;
    /** What it means. */
    semantic?: any;
    rawSemantic?: string;
    confident?: number;
  }
  /** A tag at the reader. Keep a copy of it, not itself. */
  interface Tag {
    id: string;
    direction?: TagDirection;
    app?: number;
    /** Such as `FLAT`. */
    type?: string;
    pict?: number;
    color?: TagColor;
    /** What it holds, up to its first zero byte. */
    content?: string;
  }
  /** A call between devices. Keep a copy of it, not itself. */
  interface Call {
    type: CallType;
    /** The other end. */
    correspondant: string;
  }
  /** What the device heard, with its meaning: one property for each element of its XML. Keep a copy of it, not itself. */
  interface Recognition {
    /** The words. */
    text: string;
    /** From 0 to 100. */
    confident: number;
    [name: string]: any;
  }
  /** A photo or a recording. Keep its texts, not itself. */
  interface MediaResult {
    type: Code;
    description?: string;
    /** The file, once it is there. */
    data?: MediaFile;
  }
  /** Somebody the user knows. Keep its texts, not itself. */
  interface Contact {
    firstname?: string;
    lastname?: string;
    alias?: string;
    uuid?: string;
    objects: Array<{ id: string; name?: string }>;
  }
  /** Who wrote a message, and when. */
  interface MessageHeader {
    id: string;
    /** Seconds since 1970. */
    date: number;
    /** 0 for unread, 1 for read. */
    status: 0 | 1;
    from?: Contact;
    to?: Contact;
  }
  /** What a message says. */
  interface MessageContent {
    type: ContentType;
    content: string;
    header?: string;
  }
  /** A message of the user's. Keep its texts, not itself. */
  interface Message {
    header: MessageHeader;
    content: MessageContent;
  }
  interface morvikObject {
    /** The device's LED. */
    readonly led: Morvik.ledObject;
    /** The two ears. */
    readonly ears: Morvik.earsObject;
    /** The dock: its LED and its motion. */
    readonly dock: Morvik.dockObject;
    /** Speech. */
    readonly tts: Morvik.ttsObject;
    /** Speech recognition. */
    readonly asr: Morvik.asrObject;
    /** The player, its music library, and the microphone. */
    readonly multimedia: Morvik.multimediaObject;
    /** The camera. */
    readonly webcam: Morvik.webcamObject;
    /** The button. */
    readonly button: Morvik.buttonObject;
    /** The tag reader. */
    readonly rfid: Morvik.rfidObject;
    /** Calls between devices. */
    readonly m2m: Morvik.m2mObject;
    /** Serial ports. */
    readonly serial: Morvik.serialObject;
    /** The user's messages. */
    readonly message: Morvik.messageObject;
    /** The user's contacts. */
    readonly contact: Morvik.contactObject;
    /** connects to the device server. A second call connects anew: the new connection takes the place of the old one, which stays open and unread, and up to two messages are handled in one turn of the main loop (wire.md); throws `"connection refused"`, and `"Wrong arguments"` for a port that is no number, such as the `NaN` of a launch line without one */
    connect(host: Host, port: Port): void;
    /** asks for interactive mode; `fn(object)` is called when it is granted */
    start(fn: (object: any) => any, object?: object): void;
    /** asks to give interactive mode back; five minutes after the device server's notice of the end the application ends, whatever it does */
    stop(): void;
    /** `fn` gets one object with what the device says about itself; keep a copy, not the object */
    info(fn: (info: { [name: string]: string }) => any): void;
    /** the same function as `ping` */
    ping(fn?: (code: Code) => any): void;
    /** a whole number from 0 to 9999999 */
    random(): number;
  }
  interface fileObject {
    /** a data object for a file of the application's folder. Its `text` reads the file anew each time, up to the first zero byte, and throws `"cannot open resource: "` and the path */
    read(name: FileName): DataFile;
    /** replaces the file with the text; throws what the system says when that fails */
    write(name: FileName, text: Text): void;
  }
  interface ledObject {
    /** to this colour, at once */
    light(color: Color, fn?: (code: Code) => any): void;
    /** to this colour within so many milliseconds */
    fade(color: Color, period: Milliseconds, fn?: (code: Code) => any): void;
    /** `pulse` times, for so many milliseconds each */
    pulse(color: Color, period: Milliseconds, pulse: Times, fn?: (code: Code) => any): void;
  }
  interface earsObject {
    /** to these positions; `null` leaves an ear alone */
    move(left: EarPosition, right: EarPosition, fn?: (code: Code) => any): void;
    /** by so much */
    moveRelative(left: EarSteps, right: EarSteps, fn?: (code: Code) => any): void;
    /** finds out where the ears are: `fn(code, left, right)`. Interactive mode is asked for before the arguments */
    reset(fn?: (code: Code, left: number, right: number) => any): void;
    /** as `reset`, for the left ear alone */
    resetLeft(fn?: (code: Code, left: number, right: number) => any): void;
    /** as `reset`, for the right ear alone */
    resetRight(fn?: (code: Code, left: number, right: number) => any): void;
    /** `fn(what, step, length)`; `what` is `"START_LEFT"`, `"START_RIGHT"`, `"STOP_LEFT"`, `"STOP_RIGHT"`, `"BLOCKED_LEFT"` or `"BLOCKED_RIGHT"` */
    addListener(fn: (what: EarEvent, step: number, length: number) => boolean): void;
  }
  interface dockObject {
    /** as for `led`, with the dock's LED */
    light(color: Color, fn?: (code: Code) => any): void;
    /** as for `led`, with the dock's LED */
    fade(color: Color, period: Milliseconds, fn?: (code: Code) => any): void;
    /** as for `led`, with the dock's LED */
    pulse(color: Color, period: Milliseconds, pulse: Times, fn?: (code: Code) => any): void;
    /** `"UP"`, `"DOWN"`, `"LEFT"`, `"RIGHT"` or `"STOP"`; `time` is a number, 0 when left out. `fn` is never called. Another text throws `"Wrong 1st arguments"`, and stops the dock */
    move(direction: Direction, time?: Milliseconds): void;
    move(direction: Direction, time: Milliseconds, fn?: () => any): void;
  }
  interface ttsObject {
    /** speaks. Three arguments without a function: the second and third are dropped */
    start(text: Text, lang?: Language): void;
    start(text: Text, fn?: (code: Code) => any): void;
    start(text: Text, lang: Language, fn?: (code: Code) => any): void;
    /** stops speaking */
    stop(fn?: (code: Code) => any): void;
  }
  interface asrObject {
    /** listens for one result. `fn(result)`: `text`, `confident`, and the meaning, one property for each element of its XML; keep a copy, not the object. A refusal is not told */
    string(grammar: Grammar, lang: Language, fn: (result: Recognition) => any): void;
    /** only tests the name, as `file.read` does */
    file(name: FileName, fn?: () => any): void;
  }
  interface multimediaObject {
    /** a text or a data object. `./name` is a file of the application's folder on the device, anything else goes as it is */
    play(source: Source, fn?: (code: Code) => any): void;
    /** holds the player */
    pause(fn?: (code: Code) => any): void;
    /** lets it go on */
    resume(fn?: (code: Code) => any): void;
    /** stops it */
    stop(fn?: (code: Code) => any): void;
    /** goes on to the next piece */
    next(fn?: (code: Code) => any): void;
    /** goes back to the one before */
    previous(fn?: (code: Code) => any): void;
    /** asks the library; `fn` gets the first entry of the list, and is not called when there is none */
    artist(fn: (name: string) => any): void;
    /** as `artist`, for folders */
    folder(fn: (name: string) => any): void;
    /** as `artist`, for genres */
    genre(fn: (name: string) => any): void;
    /** as `artist`, for playlists */
    playlist(fn: (name: string) => any): void;
    /** as `artist`, for songs */
    song(fn: (name: string) => any): void;
    /** `fn(result)`, as for `photo`, with the recording */
    record(fn?: (result: MediaResult) => any): void;
    /** `fn(action)`: `"PLAY"`, `"STOP"`, `"PAUSE"`, `"RESUME"` or `"MUSIC_UPDATE"` */
    addListener(fn: (action: PlayerAction) => boolean): void;
  }
  interface webcamObject {
    /** `fn(result)`: at first `type` alone, the code; later `type`, `description` when there is one, and `data`, a data object without `text`. Keep the texts, not the object or its `data` */
    photo(url: Text, fn?: (result: MediaResult) => any): void;
  }
  interface buttonObject {
    /** `fn(press)`: `"SIMPLE"`, `"DOUBLE"`, `"TRIPLE"`, `"MULTIPLE"`, `"LONG_START"` or `"LONG_STOP"` */
    addListener(fn: (press: ButtonPress) => boolean): void;
  }
  interface rfidObject {
    /** `fn(tag)`: `id`, and what is known of `direction` (`"IN"`, `"OUT"`), `app`, `type`, `pict`, `color` and `content`, a text up to its first zero byte. `app` and `pict` are numbers, `type` and `color` names such as `"FLAT"` and `"DARK_RED"`; keep a copy, not the object */
    addListener(fn: (tag: Tag) => boolean): void;
  }
  interface m2mObject {
    /** who the device is in calls. No function of `m2m` takes an `fn` but `addListener` */
    account(sipId: Text, sipDomain: Text, sipPassword: Text, stunServer: Text): void;
    /** calls another device */
    call(address: Text): void;
    /** takes the call, or declines it; anything but a boolean counts by its truth */
    answer(accept: boolean): void;
    /** ends the call */
    hangup(): void;
    /** `fn(call)`: `type`, which is `"INCOMING"`, `"BEGINNING"` or `"TERMINATED"`, and `correspondant`; keep a copy, not the object */
    addListener(fn: (call: Call) => boolean): void;
  }
  interface serialObject {
    /** 9600 when `baud` is left out */
    open__(port: Text, baud?: Baud): void;
    /** no argument is tested */
    write__(port: Text, base: Text, data: Text): void;
    /** calls `object.onMessage(object, port, data)` for each line */
    addListener__(object: SerialListener): void;
  }
  interface messageObject {
    /** `fn(messages)`, an array; each message has `header` (`id`, `date` in seconds since 1970, `status`, which is 0 for unread or 1 for read, and the contacts `from` and `to` when they are known) and `content` (`type`, which is `"TEXT"`, `"SOUND"`, `"XML"` or `"MIXED"`, `content`, and `header` when there is one); keep the texts, not the messages. A single argument that is no function is taken, and then nothing is called. Of the `fn` of these functions none is called when the answer is a code alone, such as a refusal: do not wait for it */
    list(fn: (messages: Message[]) => any): void;
    /** `ids` is an array or any object: its values are the ids. `fn` is required, as for `list`. Throws `"Too many ids"` for more than 10485760 bytes of them, with their tags and lengths on the wire */
    get(ids: Ids, fn: (messages: Message[]) => any): void;
    /** as `get`, and deletes them */
    delete(ids: Ids, fn: (messages: Message[]) => any): void;
    /** as `get`, and marks them as read */
    markAsRead(ids: Ids, fn: (messages: Message[]) => any): void;
    /** sends a text. `to` has `uuid`, and `objects`, an array of ids. `fn` is never called. Throws `"Arg[0] Must be object"` for `to`, `"Arg[0] Must be string"` for `text`, and `"Too many ids"`. What is sent stands on standard output */
    new(to: Receiver, text: Text, fn?: () => any): void;
  }
  interface contactObject {
    /** `fn(contacts)`, an array, also empty when the device refuses; each contact has `firstname`, `lastname`, `alias` and `uuid` when they are known, and `objects`, an array of `id` and, when the first of them has one, `name`; keep the texts, not the contacts */
    get(fn: (contacts: Contact[]) => any): void;
  }
  interface httpObject {
    /** the body, as text. `"curl error"` when the transfer fails; a status such as 404 is no failure */
    get(url: Url, headers?: Headers): string;
    /** the same. `params` go out as `a=1&b=2`, or as the parts of a form when `isForm` is `true` */
    post(url: Url, params: Params, headers?: Headers, isForm?: boolean): string;
    /** as `get`, with all header lines: `{header, content}` */
    get2(url: Url, headers?: Headers): HttpAnswer;
    /** as `post`, with all header lines: `{header, content}` */
    post2(url: Url, params: Params, headers?: Headers, isForm?: boolean): HttpAnswer;
  }
  interface socialObject {
    /** An account at facebook, once `social.init` has brought it. */
    readonly facebook?: Morvik.facebookObject;
    /** An account at soundcloud, once `social.init` has brought it. */
    readonly soundcloud?: Morvik.soundcloudObject;
    /** An account at twitter, once `social.init` has brought it. */
    readonly twitter?: Morvik.twitterObject;
    /** asks for the accounts; `fn(object)` when the answer is there, whatever it says. Needs no interactive mode, but a connection: without one the application ends. Objects of an earlier answer stay */
    init(fn: (object: any) => any, object?: object): void;
  }
  interface facebookObject {
    /** as `http.get` without headers, with the user's token in the URL: `access_token` */
    get(url: Url): string;
    /** as `http.post`, with the token as one more of the `params`; with a fifth argument it is no form */
    post(url: Url, params: Params, headers?: Headers, isForm?: boolean): string;
  }
  interface soundcloudObject {
    /** the same as for `facebook`, with `oauth_token` */
    get(url: Url): string;
    /** the same as for `facebook`, with `oauth_token` */
    post(url: Url, params: Params, headers?: Headers, isForm?: boolean): string;
  }
  interface twitterObject {
    /** who asks */
    readonly oauth_consumer_key: string;
    /** for which user */
    readonly oauth_token: string;
    /** signs with the user's secrets, as `signHMACSHA1`. `oauth_consumer_key` and `oauth_token` stand beside it */
    sign(text: Text): string;
  }
}

/** the first word of the launch line */
declare var appName: string;
/** the third word of the launch line, a text of its author's choice */
declare var instanceName: string;
/** the launch line */
declare var cmdline: string;
/** how the application was launched, the second word of the launch line: `name`; after `RFID;id;app;type;pict;color;data` these six as well, and after `ASR;text;semantic` the properties `text`, `semantic`, `rawSemantic` and `confident` */
declare var launchType: Morvik.LaunchType;
/** what `config.bin` holds: an object for each configured instance, and `descriptor` */
declare var params: { [name: string]: any };
/** one record in the log. Line breaks in it look like further lines on standard error; the system log keeps them in the one record */
declare function log(value: any): void;
/** ends the application once the function that called it has returned to the main loop. In the first run of `main.js` it does nothing: `setTimeout(0, exit)` ends the application from there */
declare function exit(): void;
/** calls `fn` in so many milliseconds, and again for as long as it returns `true` */
declare function setTimeout(ms: Morvik.Milliseconds, fn: () => any): void;
/** a new UUID */
declare function uuid(): string;
/** seconds since 1970, as text */
declare function timestamp(): string;
/** asks the device server for a sign of life; also `morvik.ping` */
declare function ping(fn?: (code: Morvik.Code) => any): void;
/** runs another script of the application's folder, in the same global object; what it throws comes here. A file that is missing ends the application */
declare function include(name: Morvik.FileName): void;
/** the HMAC-SHA1 of the text, in base64. Both go in as ASCII */
declare function signHMACSHA1(text: Morvik.Text, key: Morvik.Text): string;
/** The device server, and what the descriptor grants. */
declare var morvik: Morvik.morvikObject;
/** Files of the application's own folder. */
declare var file: Morvik.fileObject;
/** Requests on the web. Each waits for its end. */
declare var http: Morvik.httpObject;
/** The user's accounts, which come with the device server's answer. */
declare var social: Morvik.socialObject;
