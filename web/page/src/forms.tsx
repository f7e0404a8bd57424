// What forms are made of that ask who somebody is.
import type { ComponentChildren } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { Trouble, sentence } from "./dialogs";

/** A field that has to be filled. @param help  is read out with it. */
export function Field(props: {
    id: string;
    label: string;
    type?: string;
    autocomplete: "username" | "current-password" | "new-password" | "one-time-code";
    value?: string;
    readOnly?: boolean | undefined;
    isFocused?: boolean;
    help?: string;
    onInput: (text: string) => void;
}) {
    const { id, label, help, isFocused, onInput, ...others } = props;
    const field = useRef<HTMLInputElement>(null);
    useLayoutEffect(() => {
        isFocused && field.current?.focus();
    }, []);
    return (
        <div class="field">
            <label for={id}>{label}</label>
            <input
                id={id}
                required
                dir="auto"
                {...others}
                {...(help ? { "aria-describedby": `${id}-help` } : {})}
                ref={field}
                autofocus={isFocused}
                onInput={event => onInput(event.currentTarget.value)}
            />
            {help && (
                <p class="help" id={`${id}-help`}>
                    {help}
                </p>
            )}
        </div>
    );
}

/** A form with one button. What its work throws is shown above the fields, unless `onTrouble` says that it is none. */
export function Form(props: {
    action: string;
    work: () => Promise<void>;
    onTrouble?: (error: unknown) => boolean;
    children: ComponentChildren;
}) {
    const [trouble, setTrouble] = useState("");
    const [isBusy, setBusy] = useState(false);
    return (
        <form
            onSubmit={async event => {
                event.preventDefault();
                setBusy(true);
                setTrouble("");
                try {
                    await props.work();
                } catch (error) {
                    setTrouble(props.onTrouble?.(error) === false ? "" : sentence(error));
                }
                setBusy(false);
            }}
        >
            <Trouble text={trouble} />
            {props.children}
            <div class="buttons">
                <button class="main" disabled={isBusy}>
                    {props.action}
                </button>
            </div>
        </form>
    );
}

/** A page that is all there is, such as that for signing in. */
export const Door = (props: { title: string; children: ComponentChildren }) => (
    <main class="door">
        <h1>
            <img src="/icon.svg" alt="" width="28" height="28" /> {props.title}
        </h1>
        {props.children}
    </main>
);
