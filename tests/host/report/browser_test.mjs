// The HTML report in headless Chromium: it loads without an error or a request to the network, every
// chart is drawn, pointing and keys tell values, zooming works, and no page is wider than a phone.
//
//   node browser_test.mjs VORNEL SOURCE_FOLDER WORK_FOLDER
//
// Exits with 77 (skipped) where there is no browser or no driver for it, unless
// VORNEL_REQUIRE_BROWSER is set.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const [vornel, source, work] = process.argv.slice(2);
const kBrowser = '/usr/bin/chromium';
const kFlags = ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
    '--disable-background-networking', '--disable-component-update', '--disable-sync'];

function skip(reason) {
    console.log(`skipped: ${reason}`);
    process.exit(process.env.VORNEL_REQUIRE_BROWSER ? 1 : 77);
}

function driver() {
    try {
        return createRequire(path.join(source, 'build', 'browser', 'package.json'))('playwright-core').chromium;
    } catch (error) {
        return skip(`no playwright-core (${error.code}); tools/browser gets it`);
    }
}

const chromium = driver();
if (!fs.existsSync(kBrowser)) {
    skip(`no ${kBrowser}`);
}

// ---- pages --------------------------------------------------------------------------------------

const demo = path.join(source, 'data', 'wettzell');
const demoFiles = ['--base', 'WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz', '--rover',
    'WTZZ00DEU_R_20201770000_01H_30S_MO.rnx.gz', 'ESBC00DNK_R_20201770000_01D_MN.rnx.gz',
    'ESBC00DNK_R_20201770000_01D_RN.rnx.gz'];
const ebre = path.join(source, 'tests', 'data', 'baselines', 'ebre-bell');
const ebreFiles = ['--base', 'ebre0300.02o.xz', '--rover', 'bell0300.02o.xz', 'brdc0300.02n.xz'];

// Writes the report and the residuals as CSV; answers the rows of the latter.
function solve(name, folder, words) {
    const page = path.join(work, `${name}.html`), table = path.join(work, `${name}.csv`);
    const files = words.map((word) => (fs.existsSync(path.join(folder, word)) ? path.join(folder, word) : word));
    try {
        execFileSync(vornel, ['solve', ...files, '--report', page, '--csv', table], { stdio: 'pipe' });
    } catch (error) {
        // Of the exit codes below 20 those with a result have a page.
        assert.ok(error.status > 0 && error.status < 20 && fs.existsSync(page), String(error.stderr));
    }
    const rows = fs.readFileSync(table, 'utf8').trim().split('\n').slice(1).map((line) => line.split(','));
    return { url: pathToFileURL(page).href, rows };
}

const browser = await chromium.launch({ executablePath: kBrowser, headless: true, args: kFlags });
let failures = 0;

// Opens a page and holds it to silence: nothing on the console, nothing asked of the network.
async function onPage(title, url, width, check) {
    const context = await browser.newContext({ viewport: { width, height: 900 } });
    const page = await context.newPage();
    const noise = [];
    page.on('console', (message) => noise.push(`console: ${message.text()}`));
    page.on('pageerror', (error) => noise.push(`error: ${error.message}`));
    page.on('dialog', (dialog) => { noise.push(`dialog: ${dialog.message()}`); dialog.dismiss(); });
    page.on('request', (request) => {
        if (request.url() !== url && !request.url().startsWith('data:')) {
            noise.push(`request: ${request.url()}`);
        }
    });
    try {
        await page.goto(url);
        await page.waitForTimeout(300);
        await check(page);
        assert.deepEqual(noise, []);
        console.log(`ok      ${title}`);
    } catch (error) {
        ++failures;
        console.log(`FAILED  ${title}\n${error.stack}\n${noise.join('\n')}`);
    }
    await context.close();
}

// ---- what is asked of pages -----------------------------------------------------------------------

// Pixels of a canvas that are not blank.
function inkOf(page, index) {
    return page.evaluate((i) => {
        const canvas = document.querySelectorAll('canvas')[i];
        const pixels = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
        let ink = 0;
        for (let k = 3; k < pixels.length; k += 4) {
            ink += pixels[k] > 0 ? 1 : 0;
        }
        return ink;
    }, index);
}

const range = (page, index) => page.evaluate((i) => {
    const { min, max } = window.vornelCharts[i].plot.scales.x;
    return [min, max];
}, index);

const told = (page, index) => page.locator('.chart output').nth(index).textContent();

const kValues = /^([GRCE]\d\d), (?:\d{4}-\d\d-\d\d )?(\d\d:\d\d:\d\d), elevation (\d+\.\d)°, ([+−]\d+|0) mm$/;

async function drawn(page, charts) {
    assert.equal(await page.locator('canvas').count(), charts);
    for (let i = 0; i < charts; ++i) {
        const axes = 3000;  // pixels of axes and grid alone stay below
        assert.ok((await inkOf(page, i)) > axes, `chart ${i} is drawn`);
    }
    for (const drawing of ['svg.sky', 'svg.tracks']) {
        const box = await page.locator(drawing).boundingBox();
        assert.ok(box.width > 200 && box.height > 200, `${drawing} has a size`);
    }
    assert.ok((await page.locator('svg.sky .path').count()) > 10);
    assert.ok((await page.locator('svg.tracks rect.track').count()) > 10);
    assert.ok((await page.locator('svg.tracks rect.reference').count()) > 0);
}

// The values told must be those of the CSV: the residual of that satellite at that time.
function agreesWithTable(text, rows) {
    const [, satellite, time, , value] = kValues.exec(text) ?? assert.fail(`no values in "${text}"`);
    const fixed = rows.filter((row) => row[0] === 'fixed');
    const model = fixed.at(-1)[1];  // of the last one filed
    const row = fixed.find((r) => r[1] === model && r[3] === satellite && r[6].includes(time));
    assert.ok(row, `${satellite} at ${time} stands in the table`);
    assert.equal(Number(value.replace('−', '-')), Number(row[7]));
}

async function hovers(page, index, rows) {
    const spot = await page.evaluate((i) => {
        const chart = window.vornelCharts[i], over = chart.plot.over.getBoundingClientRect();
        return { left: over.left + scrollX, top: over.top + scrollY, width: over.width, height: over.height };
    }, index);
    await page.locator('.plot').nth(index).scrollIntoViewIfNeeded();
    const box = await page.locator('.u-over').nth(index).boundingBox();
    await page.mouse.move(box.x + 0.4 * box.width, box.y + 0.5 * box.height);
    await page.mouse.move(box.x + 0.41 * box.width, box.y + 0.5 * box.height);
    await page.waitForTimeout(100);
    assert.ok(spot.width > 100);
    agreesWithTable(await told(page, index), rows);
    const tip = page.locator('.plot').nth(index).locator('.tip');
    assert.ok(await tip.isVisible());
    assert.equal(await tip.textContent(), await told(page, index));
}

async function zooms(page, index) {
    const [from, to] = await range(page, index);
    const box = await page.locator('.u-over').nth(index).boundingBox();
    await page.mouse.move(box.x + 0.25 * box.width, box.y + 0.5 * box.height);
    await page.mouse.down();
    await page.mouse.move(box.x + 0.5 * box.width, box.y + 0.5 * box.height, { steps: 8 });
    await page.mouse.up();
    await page.waitForTimeout(100);
    const [low, high] = await range(page, index);
    const part = (high - low) / (to - from);
    assert.ok(part > 0.2 && part < 0.3, `a quarter is shown, not ${part}`);
    assert.ok(Math.abs(low - from - 0.25 * (to - from)) < 0.02 * (to - from));
    await page.mouse.dblclick(box.x + 0.5 * box.width, box.y + 0.5 * box.height);
    await page.waitForTimeout(100);
    assert.deepEqual(await range(page, index), [from, to]);
}

async function obeysKeys(page, index, rows) {
    const [from, to] = await range(page, index);
    await page.mouse.move(5, 5);
    await page.locator('.plot').nth(index).focus();
    await page.keyboard.press('ArrowRight');
    await page.keyboard.press('ArrowRight');
    const first = await told(page, index);
    agreesWithTable(first, rows);
    await page.keyboard.press('ArrowRight');
    const second = await told(page, index);
    agreesWithTable(second, rows);
    assert.notEqual(first, second);
    assert.equal(first.slice(0, 3), second.slice(0, 3));
    await page.keyboard.press('ArrowDown');
    const other = await told(page, index);
    agreesWithTable(other, rows);
    assert.notEqual(other.slice(0, 3), second.slice(0, 3));
    await page.keyboard.press('+');
    const [low, high] = await range(page, index);
    assert.ok(Math.abs((high - low) / (to - from) - 0.5) < 0.01);
    await page.keyboard.press('0');
    assert.deepEqual(await range(page, index), [from, to]);
}

async function obeysButtons(page) {
    const [from, to] = await range(page, 0);
    const buttons = page.locator('.chart').first().getByRole('button');
    assert.deepEqual(await buttons.allTextContents(),
        ['Zoom in', 'Zoom out', '◀ Back', 'Forth ▶', 'Whole range']);
    await buttons.nth(0).press('Enter');
    await buttons.nth(0).press('Enter');
    const [low, high] = await range(page, 0);
    assert.ok(Math.abs((high - low) / (to - from) - 0.25) < 0.01);
    await buttons.nth(3).press('Enter');
    assert.ok((await range(page, 0))[0] > low);
    await buttons.nth(4).press('Enter');
    assert.deepEqual(await range(page, 0), [from, to]);
}

// A satellite chosen alone is all that pointing tells of.
async function chooses(page, satellite) {
    await page.getByLabel('Satellites', { exact: true }).selectOption(satellite);
    await page.locator('.plot').first().focus();
    for (const key of ['ArrowRight', 'ArrowRight', 'ArrowDown']) {
        await page.keyboard.press(key);
        assert.equal((await told(page, 0)).slice(0, 3), satellite);
    }
    await page.getByLabel('Satellites', { exact: true }).selectOption('all');
}

const noWider = async (page) => {
    const [content, view] = await page.evaluate(() =>
        [document.documentElement.scrollWidth, document.documentElement.clientWidth]);
    assert.ok(content <= view, `the page is ${content} pixels wide in a view of ${view}`);
};

// Every control has a name, every drawing a title, headings go down one level at a time.
async function isAccessible(page) {
    const faults = await page.evaluate(() => {
        const list = [];
        let level = 0;
        document.querySelectorAll('h1, h2, h3, h4').forEach((heading) => {
            const next = Number(heading.tagName[1]);
            if (next > level + 1) {
                list.push(`${heading.tagName} "${heading.textContent}" after H${level}`);
            }
            level = next;
        });
        document.querySelectorAll('svg:not([aria-hidden])').forEach((svg) => {
            if (!svg.querySelector('title')) {
                list.push('a drawing without title');
            }
        });
        document.querySelectorAll('[tabindex], select, button').forEach((control) => {
            const named = control.getAttribute('aria-label') || control.getAttribute('aria-labelledby') ||
                control.textContent.trim() || document.querySelector(`label[for="${control.id}"]`);
            if (!named) {
                list.push(`${control.tagName} without a name`);
            }
        });
        document.querySelectorAll('[aria-labelledby], [aria-describedby]').forEach((node) => {
            for (const name of ['aria-labelledby', 'aria-describedby']) {
                (node.getAttribute(name) ?? '').split(' ').filter(Boolean).forEach((id) => {
                    if (!document.getElementById(id)) {
                        list.push(`no ${id} for ${name}`);
                    }
                });
            }
        });
        if (document.documentElement.lang !== 'en' || document.querySelectorAll('h1').length !== 1) {
            list.push('language or main heading');
        }
        return list;
    });
    assert.deepEqual(faults, []);
}

// Contrast of text against its ground, after WCAG 2.1 (4.5 to 1, or 3 to 1 for large text).
async function isReadable(page) {
    const faults = await page.evaluate(() => {
        const channels = (colour) => (colour.match(/[\d.]+/g) ?? []).map(Number);
        const luminance = ([r, g, b]) => {
            const linear = [r, g, b].map((c) => c / 255).map((c) =>
                (c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4));
            return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2];
        };
        const groundOf = (node) => {
            for (let at = node; at; at = at.parentElement) {
                const colour = channels(getComputedStyle(at).backgroundColor);
                if (colour.length === 3 || colour[3] > 0) {
                    return colour;
                }
            }
            return [255, 255, 255];
        };
        const list = new Set();
        document.querySelectorAll('main *, header *').forEach((node) => {
            const own = [...node.childNodes].some((c) => c.nodeType === 3 && c.data.trim());
            if (!own || node.closest('svg, script, .skip, [hidden]')) {
                return;
            }
            const style = getComputedStyle(node), size = parseFloat(style.fontSize);
            const [a, b] = [luminance(channels(style.color)), luminance(groundOf(node))].sort((x, y) => y - x);
            const ratio = (a + 0.05) / (b + 0.05);
            const large = size >= 24 || (size >= 18.66 && Number(style.fontWeight) >= 700);
            if (ratio < (large ? 3 : 4.5)) {
                list.add(`${node.tagName}.${node.className} ${ratio.toFixed(2)}`);
            }
        });
        return [...list];
    });
    assert.deepEqual(faults, []);
}

// ---- the tests ------------------------------------------------------------------------------------

const short = solve('demo', demo, demoFiles);
const day = solve('day', ebre, ebreFiles);

await onPage('the demo, wide', short.url, 1200, async (page) => {
    await drawn(page, 2);
    for (const chart of [0, 1]) {
        await hovers(page, chart, short.rows);
        await zooms(page, chart);
        await obeysKeys(page, chart, short.rows);
    }
    await obeysButtons(page);
    await chooses(page, 'E24');
    await noWider(page);
    await isAccessible(page);
    await isReadable(page);
});

await onPage('a day, wide', day.url, 1200, async (page) => {
    await drawn(page, 2);
    await hovers(page, 0, day.rows);
    await zooms(page, 0);
    await obeysKeys(page, 0, day.rows);
    await noWider(page);
});

for (const [name, { url }] of [['the demo', short], ['a day', day]]) {
    await onPage(`${name}, as narrow as a phone`, url, 360, async (page) => {
        await drawn(page, 2);
        await noWider(page);
    });
}

await onPage('on paper', short.url, 1200, async (page) => {
    const pdf = await page.pdf({ preferCSSPageSize: true });
    assert.equal(pdf.subarray(0, 5).toString(), '%PDF-');
    await page.emulateMedia({ media: 'print' });
    assert.equal(await page.locator('nav').isVisible(), false);
    assert.equal(await page.locator('.controls').isVisible(), false);
    assert.ok(await page.locator('canvas').first().isVisible());
});

// The triple difference has no residuals, and a page without script still tells the answer.
const none = solve('none', demo, [...demoFiles, '--elevation-mask', '80']);
await onPage('without residuals', none.url, 1200, async (page) => {
    assert.equal(await page.locator('canvas').count(), 0);
    assert.match(await page.locator('#residuals').textContent(), /no residuals/);
    assert.match(await page.locator('.badge').textContent(), /Check|Fail/);
    await noWider(page);
});

{
    const context = await browser.newContext({ javaScriptEnabled: false });
    const page = await context.newPage();
    await page.goto(short.url);
    assert.match(await page.locator('.badge').textContent(), /Pass/);
    assert.match(await page.locator('#residuals').textContent(), /need JavaScript/);
    await context.close();
    console.log('ok      without script');
}

await browser.close();
process.exit(failures === 0 ? 0 : 1);
