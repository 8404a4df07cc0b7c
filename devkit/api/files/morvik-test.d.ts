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

  // @STIMULI@

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
